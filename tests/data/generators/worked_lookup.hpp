#ifndef ZAT16_LOOKUP_H  /* Automagically generated -- do not edit */
#define ZAT16_LOOKUP_H

namespace ZAT16 {

  static const NameLookupTable nameLookupToplevelTags[] = {
    { "ToplevelTags", 0 }, // Name and type of the lookup table
    { "GetInfo",                                       0xD101 }, // Request
    { "InfoReply",                                     0xE101 }, // Answer

    { "Power",                                         0x2001 }, // Bool
    { "Mode",                                          0x1002 }, // Integer
    { "Flags",                                         0x7001 }, // BitArray
    { 0, 0 },
  };

  static const NameLookupTable nameLookupMode[] = {
    { "Mode", 1 }, // Name and type of the lookup table
    { "Off",                                           0 },
    { "On",                                            1 },
    { 0, 0 },
  };

  static const NameLookupTable nameLookupFlags[] = {
    { "Flags", 2 }, // Name and type of the lookup table
    { "Ready",                                         0 },
    { "Error",                                         3 },
    { 0, 0 },
  };

  static const TagLookupTable tagLookup[] = {
    {    ~0U, nameLookupToplevelTags                     },
    { 0x1002, nameLookupMode                             },
    { 0x7001, nameLookupFlags                            },
    { 0x7001, nameLookupFlags                            },
    { 0, 0 },
  };

}

#endif
