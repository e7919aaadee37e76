// One standard spelling for every name of an encoding: the compiled-in table first, then ICU.
#include "encoding_names.hpp"

#include "converter_state.hpp"
#include "locale/locale_context.hpp"

#include <fl/i18n/encoding_names.hpp>

namespace fl::i18n {

namespace detail {

std::string preferred_standard_name(UConverter* converter)
{
    UErrorCode status = U_ZERO_ERROR;
    const char* icu_name = ucnv_getName(converter, &status);
    if (U_FAILURE(status) || icu_name == nullptr || *icu_name == '\0')
        return {};
    for (const char* standard : {"MIME", "IANA", "WINDOWS"}) {
        status = U_ZERO_ERROR;
        const char* name = ucnv_getStandardName(icu_name, standard, &status);
        if (U_SUCCESS(status) && name != nullptr && *name != '\0')
            return name;
    }
    return icu_name;
}

std::string icu_standard_name(const std::string& name)
{
    UErrorCode status = U_ZERO_ERROR;
    const converter_ptr converter(ucnv_open(name.c_str(), &status));
    if (U_FAILURE(status) || !converter)
        return {};
    return preferred_standard_name(converter.get());
}

}  // namespace detail

std::string get_standard_encoding_name(const std::string& name)
{
    const detail::locale_registry& registry = detail::locale_context().registry;
    // A listed spelling never reaches ICU.
    if (const char* standard = registry.find_standard_encoding(name))
        return standard;
    std::string candidate = detail::icu_standard_name(name);
    // ICU may resolve an unlisted spelling to a listed encoding ("latin1"): the table spells it.
    if (const char* standard = registry.find_standard_encoding(candidate))
        return standard;
    return candidate;
}

namespace lcmgmt {

bool is_supported_encoding(const std::string& name)
{
    const detail::locale_registry& registry = detail::locale_context().registry;
    return registry.find_standard_encoding(name) != nullptr
           || registry.find_standard_encoding(detail::icu_standard_name(name)) != nullptr;
}

}  // namespace lcmgmt

}  // namespace fl::i18n
