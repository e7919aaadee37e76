// `qxi18n text classify`: the classes of each code point, as the library's lcctype answers them.
#include "text_command.hpp"

#include <fl/i18n/lcctype.hpp>

#include <unicode/uchar.h>

#include <cstdio>

namespace qxi18n_tool {

namespace {

namespace ct = fl::i18n::lcctype;

struct class_test {
    const char* name;
    bool (*test)(char32_t c);
};

const class_test class_tests[] = {
    {"alpha", ct::isalpha},
    {"digit", ct::isdigit},
    {"alnum", ct::isalnum},
    {"xdigit", ct::isxdigit},
    {"upper", ct::isupper},
    {"lower", ct::islower},
    {"punct", ct::ispunct},
    {"graph", ct::isgraph},
    {"print", ct::isprint},
    {"cntrl", ct::iscntrl},
    {"space", ct::isspace},
    {"breakable-space", ct::isbreakable_space},
    {"blank", [](char32_t c) { return ct::isblank(c) != 0; }},
};

std::string category_name(char32_t c)
{
    const auto type = static_cast<int32_t>(u_charType(static_cast<UChar32>(c)));
    const char* name = u_getPropertyValueName(UCHAR_GENERAL_CATEGORY, type, U_SHORT_PROPERTY_NAME);
    return name != nullptr ? name : "?";
}

}  // namespace

void print_classification(const ustring& text, const std::function<std::string(const ustring&)>& encode)
{
    for (std::size_t i = 0; i < text.size();) {
        char32_t c = text[i];
        std::size_t units = 1;
        if (i + 1 < text.size() && c >= 0xD800 && c <= 0xDBFF && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF) {
            c = ct::make_utf32_from_uchar(text[i], text[i + 1]);
            units = 2;
        }
        std::string shown = " ";
        if (ct::is_valid_utf32(c) && !ct::iscntrl(c))
            shown = encode(text.substr(i, units));
        std::string classes;
        for (const class_test& t : class_tests)
            if (t.test(c))
                classes.append(classes.empty() ? "" : " ").append(t.name);
        if (!ct::is_valid_utf32(c))
            classes = "lone surrogate";
        std::printf("U+%04X  %s  %-2s  %s\n", static_cast<unsigned>(c), shown.c_str(), category_name(c).c_str(),
                    classes.c_str());
        i += units;
    }
}

}  // namespace qxi18n_tool
