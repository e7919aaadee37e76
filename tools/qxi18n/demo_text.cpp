// The demo's tour of the text engine: case, normal forms, diacritics, comparison, search and
// pattern matching, each on a text where the choice of operation changes the answer.
#include "demo.hpp"

#include <fl/i18n/character_handling.hpp>
#include <fl/i18n/conversion.hpp>
#include <fl/i18n/locale.hpp>
#include <fl/i18n/pattern_match.hpp>
#include <fl/i18n/text_compare.hpp>
#include <fl/i18n/transform.hpp>

#include <cstdio>

namespace qxi18n_tool::demo {

namespace {

using namespace fl::i18n;
using foundation::ustring::detail::do_transform_impl;

std::string utf8(const ustring& text) { return ustring_to_utf8(text); }

const char* order(int result) { return result < 0 ? "less" : result > 0 ? "greater" : "equal"; }

// `text` followed by blanks up to `width` columns, counting characters that take a column
// (UTF-8 continuation bytes and combining marks take none).
std::string pad(const ustring& text, std::size_t width)
{
    std::size_t columns = 0;
    for (const char16_t unit : text)
        columns += (unit < 0x0300 || unit > 0x036F) && (unit < 0xDC00 || unit > 0xDFFF);
    return utf8(text) + std::string(columns < width ? width - columns : 1, ' ');
}

void show_line(const ustring& label, const ustring& value)
{
    std::printf("  %s%s\n", pad(label, 36).c_str(), utf8(value).c_str());
}

void show_case_and_forms()
{
    const ustring strasse = u"straße", istanbul = u"istanbul";
    show_line(u"upper of \"" + strasse + u"\"",
              do_transform_impl(strasse.data(), strasse.size(), to_upper()) + u" (one letter becomes two)");
    const auto turkish = QxLocale::createLocale("tr_TR");
    show_line(u"upper of \"" + istanbul + u"\", root / tr_TR",
              do_transform_impl(istanbul.data(), istanbul.size(), to_upper()) + u" / "
                  + do_transform_impl(istanbul.data(), istanbul.size(), to_upper_locale(*turkish)));
    const ustring e_acute = u"\u00E9";
    const auto units = [](const ustring& text) { return to_ustring(std::to_string(text.size()).c_str()); };
    show_line(u"\"" + e_acute + u"\" in NFC / NFD",
              units(do_transform_impl(e_acute.data(), e_acute.size(), to_nfc())) + u" / "
                  + units(do_transform_impl(e_acute.data(), e_acute.size(), to_nfd())) + u" UTF-16 units");
    const ustring marked = u"Ångström, crème brûlée, Dvořák";
    show_line(u"without diacritics", detail::do_transform(marked.data(), marked.size(), to_no_diacritics()));
}

void show_comparison()
{
    struct pair {
        const char16_t* a;
        const char16_t* b;
    };
    const pair pairs[] = {{u"Straße", u"STRASSE"}, {u"caf\u00E9", u"cafe\u0301"}, {u"\uFB01le", u"file"}};
    std::printf("\n  %-22s %-10s %-10s %-12s %s\n", "compare", "sensitive", "insens.", "normalized",
                "compatibility");
    for (const pair& p : pairs) {
        const ustring a = p.a, b = p.b;
        const auto run = [&](const auto& tag) { return order(detail::compare(a.data(), a.size(), b.data(), b.size(), tag)); };
        std::printf("  %s%-10s %-10s %-12s %s\n", pad(a + u" / " + b, 23).c_str(), run(case_sensitive()),
                    run(case_insensitive()), run(normalized_case_sensitive()),
                    run(normalized_compatibility_case_sensitive()));
    }
    const ustring haystack = u"Die Straße ist lang";
    std::printf("\n  find \"STRASSE\" in \"%s\", case-insensitive: position %lu of the upper-cased text\n",
                utf8(haystack).c_str(), detail::find(haystack, u"STRASSE", case_insensitive()));
}

void show_matching()
{
    using mode = character_handling_mode_context;
    const ustring decomposed = u"cafe\u0301";
    std::printf("\n  pattern \"caf\u00E9\" against \"caf\u00E9\" typed with a combining accent:\n");
    for (const auto& [name, mask] : {std::pair{"default_mode", mode::default_mode},
                                     std::pair{"normalized_compose_mode", mode::normalized_compose_mode},
                                     std::pair{"case_insensitive_mode", mode::case_insensitive_mode}}) {
        const pattern_match matcher(u"caf\u00E9", mode(mask));
        std::printf("    %-26s %s\n", name, matcher.match(decomposed) ? "match" : "no match");
    }
}

}  // namespace

void show_text_engine(const context&)
{
    std::printf("The text engine works on ustring with ICU: case mapping, normal forms, removal of\n"
                "diacritics, comparison and search by case and normalisation, pattern matching.\n\n");
    show_case_and_forms();
    show_comparison();
    show_matching();
}

}  // namespace qxi18n_tool::demo
