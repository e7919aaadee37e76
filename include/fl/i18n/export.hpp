// The one export macro of libqxi18n: the library is built with hidden visibility, and only
// declarations marked with this macro are part of its binary interface.
#pragma once

#define QXI18N_API __attribute__((visibility("default")))
