// Removing leading and trailing code units that belong to a set.
#include <fl/i18n/trim.hpp>

namespace fl::i18n {

namespace {

enum side : unsigned { left = 1, right = 2, both = left | right };

struct span {
    std::size_t begin;
    std::size_t end;
};

// The units of `text` that stay. A text made only of units of `set` keeps nothing; an empty set
// matches no unit, so everything stays.
span kept(const ustring& text, const ustring& set, side sides)
{
    span s{0, text.size()};
    if ((sides & left) != 0) {
        s.begin = text.find_first_not_of(set);
        if (s.begin == ustring::npos)
            return {0, 0};
    }
    if ((sides & right) != 0)
        s.end = text.find_last_not_of(set) + 1;  // npos + 1 wraps to 0: nothing stays
    return s;
}

ustring& trim_in_place(ustring& text, const ustring& set, side sides)
{
    const span s = kept(text, set, sides);
    text.erase(s.end);
    return text.erase(0, s.begin);
}

ustring trim_to_copy(const ustring& text, const ustring& set, side sides)
{
    const span s = kept(text, set, sides);
    return text.substr(s.begin, s.end - s.begin);
}

}  // namespace

ustring& trim(ustring& text, const ustring& set) { return trim_in_place(text, set, both); }
ustring& trim_left(ustring& text, const ustring& set) { return trim_in_place(text, set, left); }
ustring& trim_right(ustring& text, const ustring& set) { return trim_in_place(text, set, right); }
ustring trim_copy(const ustring& text, const ustring& set) { return trim_to_copy(text, set, both); }
ustring trim_copy_left(const ustring& text, const ustring& set) { return trim_to_copy(text, set, left); }
ustring trim_copy_right(const ustring& text, const ustring& set) { return trim_to_copy(text, set, right); }

}  // namespace fl::i18n
