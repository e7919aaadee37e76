// ICU's view of an encoding name, shared by the encoding-name lookups and the locale layer.
#pragma once

#include <unicode/ucnv.h>

#include <string>

namespace fl::i18n::detail {

/// The MIME, else IANA, else WINDOWS name of an open converter's encoding, else ICU's own name;
/// empty when ICU gives the converter no name.
std::string preferred_standard_name(UConverter* converter);

/// preferred_standard_name of `name` opened with ucnv_open (the converter is closed at once);
/// empty when ICU cannot open it. No exception for an unknown name.
std::string icu_standard_name(const std::string& name);

}  // namespace fl::i18n::detail
