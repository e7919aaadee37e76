// Search of UTF-16 text, as it stands or after upper-casing and composition (the same output
// as do_transform_impl, kept on the stack for short texts).
#include <fl/i18n/text_compare.hpp>

#include <fl/i18n/transform.hpp>

#include <cstddef>

namespace fl::i18n::detail {
namespace {

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

// A transformed text that lives on the stack up to 1024 units, so that searching short texts
// allocates nothing; longer output gets a string of exactly its length and a second pass.
class transformed {
public:
    template <class Tag>
    transformed(std::u16string_view text, const Tag& tag)
    {
        length_ = transform(inline_, inline_capacity, text.data(), text.size(), tag);
        if (length_ > inline_capacity) {
            long_.resize(length_);
            length_ = transform(long_.data(), length_, text.data(), text.size(), tag);
        }
    }
    transformed(const transformed&) = delete;
    transformed& operator=(const transformed&) = delete;

    std::u16string_view view() const noexcept
    {
        return {length_ > inline_capacity ? long_.data() : inline_, length_};
    }

private:
    static constexpr unsigned long inline_capacity = 1024;
    char16_t inline_[inline_capacity];
    unsigned long length_ = 0;
    ustring long_;
};

}  // namespace

unsigned long find(std::u16string_view haystack, std::u16string_view needle, const case_sensitive&)
{
    return scan_for(haystack, needle);
}

// By full upper case, not case folding: "STRASSE" is found in "straße".
unsigned long find(std::u16string_view haystack, std::u16string_view needle, const case_insensitive&)
{
    const transformed upper_haystack(haystack, to_upper());
    const transformed upper_needle(needle, to_upper());
    return scan_for(upper_haystack.view(), upper_needle.view());
}

unsigned long find(std::u16string_view haystack, std::u16string_view needle, const normalized_case_sensitive&)
{
    const transformed composed_haystack(haystack, to_nfc());
    const transformed composed_needle(needle, to_nfc());
    return scan_for(composed_haystack.view(), composed_needle.view());
}

unsigned long find(std::u16string_view haystack, std::u16string_view needle, const normalized_case_insensitive&)
{
    const transformed composed_haystack(haystack, to_nfc());
    const transformed composed_needle(needle, to_nfc());
    const transformed upper_haystack(composed_haystack.view(), to_upper());
    const transformed upper_needle(composed_needle.view(), to_upper());
    return scan_for(upper_haystack.view(), upper_needle.view());
}

}  // namespace fl::i18n::detail
