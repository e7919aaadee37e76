// Start-up of locale management and the pushes of new global locales.
#pragma once

#include "locale_context.hpp"

namespace fl::i18n::detail {

/// Appends a global locale made from the system locale: numbers "en_US_POSIX", messages "en_US"
/// when `disable_l10n`, the system encoding. Caller holds global_mutex.
void push_global_locale(QxLocaleCtx& context, bool disable_l10n);

/// Turns LC_MESSAGES to what a disabled localisation needs, once start-up has resolved the
/// user's settings. Caller holds global_mutex.
void disable_messages(QxLocaleCtx& context);

/// The database's full path from QXLOCALE_LCDATA_PATH / QXLOCALE_LCDATA_FILENAME or the
/// installation's "bin/lcdata.xml"; empty when neither gives a directory. Logs where it came from.
std::string locale_database_path(QxLocaleCtx& context);

}  // namespace fl::i18n::detail
