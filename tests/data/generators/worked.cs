public enum TagID
{
  GetInfo                                          = 0xD101,
  InfoReply                                        = 0xE101,

  Power                                            = 0x2001,
  Mode                                             = 0x1002,
  Flags                                            = 0x7001,
}

public enum ModeEnums
{
  Off                                              = 0,
  On                                               = 1,
}

public enum FlagsBits
{
  Ready                                            = 0,
  Error                                            = 3,
}

public enum FlagsMasks
{
  Ready                                            = 0x01,
  Error                                            = 0x08,
}
