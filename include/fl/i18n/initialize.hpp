// The library's one start-up call.
#pragma once

#include <fl/i18n/export.hpp>

namespace fl::i18n {

/// Brings locale management up (initLcMgmtSystem) and points ICU at the product's time-zone
/// data: ICU_TIMEZONE_FILES_DIR is set from QX_TZDATA_DIR, else to "<install>/bin/icutzdata";
/// QX_TZDATA_DIR=DISABLE leaves it alone. Call it early, before threads read the environment.
/// Safe to call any number of times from any thread; a call that throws leaves the rest to the
/// next call.
QXI18N_API void initialize();

}  // namespace fl::i18n
