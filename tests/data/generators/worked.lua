
-- Automagically generated -- do not edit

zat16.lutTag = {
  GetInfo                                            = 0xD101,    -- Request 
  InfoReply                                          = 0xE101,    -- Answer  

  Power                                              = 0x2001,    -- Bool    
  Mode                                               = 0x1002,    -- Integer 
  Flags                                              = 0x7001,    -- BitArray
}

zat16.lutMode = {
  Off                                                = 0,
  On                                                 = 1,
}

zat16.lutBitFlags = {
  Ready                                              = 1,
  Error                                              = 8,
}

