// Search of UTF-16 text, as it stands or after upper-casing and composition.
#include <fl/i18n/text_compare.hpp>

#include <fl/i18n/transform.hpp>

#include <cstddef>

namespace fl::i18n::detail {
namespace {

using foundation::ustring::detail::do_transform_impl;

// The first unit, then the rest, one position at a time: no tables, so nothing is allocated.
unsigned long scan_for(std::u16string_view haystack, std::u16string_view needle) noexcept
{
    if (needle.empty())
        return 0;
    if (haystack.size() < needle.size())
        return npos;
    const std::u16string_view rest = needle.substr(1);
    const std::size_t last = haystack.size() - needle.size();
    for (std::size_t i = 0; i <= last; ++i) {
        if (haystack[i] == needle[0] && haystack.substr(i + 1, rest.size()) == rest)
            return i;
    }
    return npos;
}

template <class Tag>
ustring transformed(std::u16string_view text, const Tag& tag)
{
    return do_transform_impl(text.data(), text.size(), tag);
}

}  // namespace

unsigned long find(std::u16string_view haystack, std::u16string_view needle, const case_sensitive&)
{
    return scan_for(haystack, needle);
}

// By full upper case, not case folding: "STRASSE" is found in "straße".
unsigned long find(std::u16string_view haystack, std::u16string_view needle, const case_insensitive&)
{
    const ustring upper_haystack = transformed(haystack, to_upper());
    const ustring upper_needle = transformed(needle, to_upper());
    return scan_for(upper_haystack, upper_needle);
}

unsigned long find(std::u16string_view haystack, std::u16string_view needle, const normalized_case_sensitive&)
{
    const ustring composed_haystack = transformed(haystack, to_nfc());
    const ustring composed_needle = transformed(needle, to_nfc());
    return scan_for(composed_haystack, composed_needle);
}

unsigned long find(std::u16string_view haystack, std::u16string_view needle, const normalized_case_insensitive&)
{
    const ustring composed_haystack = transformed(haystack, to_nfc());
    const ustring composed_needle = transformed(needle, to_nfc());
    const ustring upper_haystack = transformed(composed_haystack, to_upper());
    const ustring upper_needle = transformed(composed_needle, to_upper());
    return scan_for(upper_haystack, upper_needle);
}

}  // namespace fl::i18n::detail
