"""Checks the Python module that zat16_generate() made with the plugin zatgen-python from
battery-charger.zatdef. The folder of the module is the first argument."""

import sys
from enum import IntEnum, IntFlag

sys.path.insert(0, sys.argv[1])
import battery_tags  # noqa: E402

checks = 0
failures = 0


def expect(name, actual, expected):
    global checks, failures
    checks += 1
    if actual != expected:
        print("FAIL: %s is %r (0x%X), expected %r (0x%X)" % (name, actual, actual, expected, expected))
        failures += 1


Tag = battery_tags.Tag
expect("Tag.GetBayState", int(Tag.GetBayState), 0xD101)
expect("Tag.BayStateReply", int(Tag.BayStateReply), 0xE101)
expect("Tag.FactoryReset", int(Tag.FactoryReset), 0xD1FF)
expect("Tag.ChargeCurrent", int(Tag.ChargeCurrent), 0x1104)
expect("Tag.ChargerAddress", int(Tag.ChargerAddress), 0x9101)
expect("Tag.CalibrationData", int(Tag.CalibrationData), 0x0101)
expect("members of Tag", len(Tag.__members__), 24)
expect("Chemistry.LeadAcid", int(battery_tags.Chemistry.LeadAcid), 5)
expect("CurrentOffset.Minus20", int(battery_tags.CurrentOffset.Minus20), -20)
expect("BayIndex.Bay4", int(battery_tags.BayIndex.Bay4), 4)
expect("BayStatusBits.Full", int(battery_tags.BayStatusBits.Full), 0x4)
expect("BayStatusBits.ReversePolarity", int(battery_tags.BayStatusBits.ReversePolarity), 0x2000)
expect("IntEnum", issubclass(battery_tags.Chemistry, IntEnum), True)
expect("IntFlag", issubclass(battery_tags.BayStatusBits, IntFlag), True)
expect("DATA_TYPES[ChargeCurrent]", battery_tags.DATA_TYPES[0x1104], "Integer")
expect("DATA_TYPES[ChargerAddress]", battery_tags.DATA_TYPES[0x9101], "IPAddress")

print("%d checks, %d failed" % (checks, failures))
sys.exit(1 if failures else 0)
