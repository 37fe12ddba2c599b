/* Checks the macros of the C header that zat16_generate() made from battery-charger.zatdef. */

#include "battery_tags.h"

#include <stdio.h>

static int checks;
static int failures;

static void expect(const char *name, long long actual, long long expected)
{
    ++checks;
    if (actual != expected) {
        printf("FAIL: %s is %lld (0x%llX), expected %lld (0x%llX)\n",
               name,
               actual,
               (unsigned long long)actual,
               expected,
               (unsigned long long)expected);
        ++failures;
    }
}

#define EXPECT(macro, value) expect(#macro, (long long)(macro), (long long)(value))

int main(void)
{
    /* The fixed data-type macros. */
    EXPECT(ZAT16DT_Integer, 1);
    EXPECT(ZAT16DT_NetworkAddress, 9);
    EXPECT(ZAT16DT_Request, 13);
    EXPECT(ZAT16DT_ExtSize, 0x82);

    /* Requests paired with their answers, the other nested tags, the plain tags. */
    EXPECT(MSG_GetBayState, 0xD101);
    EXPECT(MSG_BayStateReply, 0xE101);
    EXPECT(MSG_StopChargeReply, 0xE103);
    EXPECT(MSG_FactoryReset, 0xD1FF);
    EXPECT(MSG_BayList, 0xC101);
    EXPECT(MSG_FaultMessage, 0xF102);
    EXPECT(TAG_ChargeCurrent, 0x1104);
    EXPECT(TAG_BayStatus, 0x7101);
    EXPECT(TAG_ChargerAddress, 0x9101);
    EXPECT(TAG_CalibrationData, 0x0101);

    /* Enumerations: a plain run of values has a count, the offsets are negative and have none. */
    EXPECT(ENU_BayIndex_Bay4, 4);
    EXPECT(CNT_BayIndex, 4);
    EXPECT(ENU_Chemistry_LeadAcid, 5);
    EXPECT(CNT_Chemistry, 6);
    EXPECT(ENU_CurrentOffset_Minus20, -20);
    EXPECT(ENU_CurrentOffset_Plus10, 10);

    /* Bit numbers and masks. */
    EXPECT(BIT_BayStatus_Inserted, 0);
    EXPECT(BIT_BayStatus_Overheated, 12);
    EXPECT(MSK_BayStatus_Full, 0x4);
    EXPECT(MSK_BayStatus_ReversePolarity, 0x2000);

#ifdef CNT_CurrentOffset
    printf("FAIL: CNT_CurrentOffset is defined\n");
    ++failures;
#endif

    printf("check_header: %d checks, %d failed\n", checks, failures);
    return failures ? 1 : 0;
}
