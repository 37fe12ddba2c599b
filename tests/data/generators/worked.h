#ifndef ZAT16_TAGS_H  /* Automagically generated -- do not edit */
#define ZAT16_TAGS_H

#define ZAT16DT_Binary           0
#define ZAT16DT_Integer          1
#define ZAT16DT_Bool             2
#define ZAT16DT_String           3
#define ZAT16DT_Date             4
#define ZAT16DT_Time             5
#define ZAT16DT_DateTime         6
#define ZAT16DT_BitArray         7
#define ZAT16DT_NetworkAddress   9

#define ZAT16DT_List             12
#define ZAT16DT_Request          13
#define ZAT16DT_Answer           14
#define ZAT16DT_Message          15

#define ZAT16DT_ExtPoint         0x80
#define ZAT16DT_ExtRect          0x81
#define ZAT16DT_ExtSize          0x82

#define MSG_GetInfo                                   0xD101  /* Request  */
#define MSG_InfoReply                                 0xE101  /* Answer   */

#define TAG_Power                                     0x2001  /* Bool     */
#define TAG_Mode                                      0x1002  /* Integer  */
#define TAG_Flags                                     0x7001  /* BitArray */

#define ENU_Mode_Off                                  0
#define ENU_Mode_On                                   1
#define CNT_Mode                                       2

#define BIT_Flags_Ready                               0
#define BIT_Flags_Error                               3
#define MSK_Flags_Ready                               0x01
#define MSK_Flags_Error                               0x08

#endif
