// The one export macro of libqxtessera: built with hidden visibility, the library exports
// only what carries this macro.
#pragma once

#define QXTESSERA_API __attribute__((visibility("default")))
