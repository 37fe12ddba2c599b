#pragma once

// Registers the compiled icon resource "zatedit" (":/icons/i16_*.png"). Linking zat16resources
// registers it at start-up already; calling this again does no harm.
void zat16InitResources();
