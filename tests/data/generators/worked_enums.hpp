#ifndef ZAT16_ENUMS_H  /* Automagically generated -- do not edit */
#define ZAT16_ENUMS_H

namespace ZAT16 {

  namespace Type {
    enum T {
      Binary         = 0,
      Integer        = 1,
      Bool           = 2,
      String         = 3,
      Date           = 4,
      Time           = 5,
      DateTime       = 6,
      BitArray       = 7,
      NetworkAddress = 9,

      List           = 12,
      Request        = 13,
      Answer         = 14,
      Message        = 15,

      ExtPoint       = 0x80,
      ExtRect        = 0x81,
      ExtSize        = 0x82,
    };
  }

  namespace Cmd {
    enum T {
      GetInfo                                          = 0xD101,
      InfoReply                                        = 0xE101,
    };
  }

  namespace Tag {
    enum T {
      Power                                            = 0x2001,
      Mode                                             = 0x1002,
      Flags                                            = 0x7001,
    };
  }

  namespace Mode {
    enum T {
      Off                                              = 0,
      On                                               = 1,
    };
    enum C {
      EnumCount = 2
    };
  };

  namespace FlagsBits {
    enum T {
      Ready                                            = 0,
      Error                                            = 3,
    };
  }

  namespace Flags {
    enum T {
      Ready                                            = 0x01,
      Error                                            = 0x08,
    };
  }
}

#endif
