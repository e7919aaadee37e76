// Comparison and search: every tag against raw ICU on random text, the null and empty rules, size
// limits, texts past the 1024-unit stack buffer, and the allocations short texts must not make.
#include "text_reference.hpp"

#include <fl/i18n/ctype_error.hpp>
#include <fl/i18n/text_compare.hpp>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <vector>

namespace {
std::atomic<long> allocations{0};
}

// Counts the library's own allocations; ICU allocates through malloc and is not counted.
void* operator new(std::size_t size)
{
    ++allocations;
    if (void* p = std::malloc(size == 0 ? 1 : size))
        return p;
    throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace compare_find_test {
namespace {

namespace tx = fl::i18n::detail;
using namespace text_test;

int sign(int value) { return (value > 0) - (value < 0); }
int32_t length_of(const ustring& text) { return static_cast<int32_t>(text.size()); }

using library_compare = std::function<int(const char16_t*, unsigned long, const char16_t*, unsigned long)>;

template <class Tag>
library_compare with_tag(Tag tag)
{
    return [tag](const char16_t* a, unsigned long a_length, const char16_t* b, unsigned long b_length) {
        return tx::compare(a, a_length, b, b_length, tag);
    };
}

int icu_unorm_compare(const ustring& a, const ustring& b, uint32_t options)
{
    UErrorCode status = U_ZERO_ERROR;
    const int result = unorm_compare(a.data(), length_of(a), b.data(), length_of(b), options, &status);
    EXPECT_TRUE(U_SUCCESS(status)) << u_errorName(status);
    return result;
}

int icu_code_units(const ustring& a, const ustring& b)
{
    return u_strCompare(a.data(), length_of(a), b.data(), length_of(b), false);
}

ustring nfkd(const ustring& text) { return icu_result(icu_normalizer(unorm2_getNFKDInstance), text); }

struct compare_case {
    const char* name;
    library_compare library;
    std::function<int(const ustring&, const ustring&)> reference;
};

const std::vector<compare_case>& compare_members()
{
    static const std::vector<compare_case> cases = {
        {"case_sensitive", with_tag(fl::i18n::case_sensitive()), icu_code_units},
        {"case_insensitive", with_tag(fl::i18n::case_insensitive()),
         [](const ustring& a, const ustring& b) {
             UErrorCode status = U_ZERO_ERROR;
             return u_strCaseCompare(a.data(), length_of(a), b.data(), length_of(b), 0, &status);
         }},
        {"normalized_case_sensitive", with_tag(fl::i18n::normalized_case_sensitive()),
         [](const ustring& a, const ustring& b) { return icu_unorm_compare(a, b, 0); }},
        {"normalized_case_insensitive", with_tag(fl::i18n::normalized_case_insensitive()),
         [](const ustring& a, const ustring& b) { return icu_unorm_compare(a, b, U_COMPARE_IGNORE_CASE); }},
        {"normalized_compatibility_case_sensitive", with_tag(fl::i18n::normalized_compatibility_case_sensitive()),
         [](const ustring& a, const ustring& b) { return icu_code_units(nfkd(a), nfkd(b)); }},
        {"normalized_compatibility_case_insensitive",
         with_tag(fl::i18n::normalized_compatibility_case_insensitive()),
         [](const ustring& a, const ustring& b) { return icu_unorm_compare(nfkd(a), nfkd(b), U_COMPARE_IGNORE_CASE); }},
    };
    return cases;
}

// A partner for `a` that is often equal to it under some tag: its decomposed, upper-cased or
// compatibility form, a prefix, or unrelated text.
ustring partner(std::mt19937& rng, const ustring& a)
{
    switch (std::uniform_int_distribution<int>(0, 5)(rng)) {
    case 0: return a;
    case 1: return icu_result(icu_normalizer(unorm2_getNFDInstance), a);
    case 2: return icu_result(icu_case(u_strToUpper, ""), a);
    case 3: return nfkd(icu_result(icu_case(u_strToLower, ""), a));
    case 4: return a.substr(0, 1 + a.size() / 2);
    default: return random_text(rng, 20);
    }
}

TEST(Compare, has_the_sign_of_icu)
{
    std::mt19937 rng(random_text_seed);
    for (int round = 0; round < 400; ++round) {
        const ustring a = random_text(rng, 20);
        const ustring b = partner(rng, a);
        SCOPED_TRACE(testing::Message() << "seed " << random_text_seed << ", round " << round << ", a "
                                        << testing::PrintToString(a) << ", b " << testing::PrintToString(b));
        for (const auto& member : compare_members())
            EXPECT_EQ(sign(member.library(a.data(), a.size(), b.data(), b.size())), sign(member.reference(a, b)))
                << member.name;
    }
    // Code-unit order, not code-point order: U+FFFD sorts after a surrogate pair, decomposed or not.
    EXPECT_EQ(sign(compare_members()[0].library(u"\uFFFD", 1, u"\U00010000", 2)), 1);
    EXPECT_EQ(sign(compare_members()[4].library(u"\uFFFD", 1, u"\U00010000", 2)), 1);
}

TEST(Compare, null_and_empty_texts_order_first_before_any_size_check)
{
    const char16_t* const abc = u"abc";
    const struct {
        const char16_t* a;
        unsigned long a_length;
        const char16_t* b;
        unsigned long b_length;
        int expected;
    } rows[] = {
        {nullptr, 0, nullptr, 0, 0},    {abc, 0, nullptr, 0, 0},     {nullptr, 7, abc, 0, 0},
        {nullptr, 3, abc, 3, -1},       {abc, 0, abc, 3, -1},        {abc, 3, nullptr, 5, 1},
        {abc, 3, abc, 0, 1},            {nullptr, ~0UL, abc, 3, -1}, {abc, 3, nullptr, 0x80000000UL, 1},
        {abc, 0x80000000UL, abc, 0, 1},
    };
    for (const auto& member : compare_members()) {
        for (const auto& row : rows) {
            SCOPED_TRACE(testing::Message() << member.name << ", lengths " << row.a_length << " " << row.b_length);
            EXPECT_EQ(member.library(row.a, row.a_length, row.b, row.b_length), row.expected);
        }
        for (const unsigned long huge : {0x80000000UL, ~0UL}) {
            EXPECT_THROW(member.library(u"a", huge, u"b", 1), fl::i18n::CtypeSizeTooLarge) << member.name;
            EXPECT_THROW(member.library(u"a", 1, u"b", huge), fl::i18n::CtypeSizeTooLarge) << member.name;
        }
    }
}

using library_find = std::function<unsigned long(std::u16string_view, std::u16string_view)>;

template <class Tag>
library_find find_with(Tag tag)
{
    return [tag](std::u16string_view haystack, std::u16string_view needle) { return tx::find(haystack, needle, tag); };
}

TEST(Find, matches_a_search_of_the_icu_forms)
{
    const auto upper = [](const ustring& text) { return icu_result(icu_case(u_strToUpper, ""), text); };
    const auto nfc = [](const ustring& text) { return icu_result(icu_normalizer(unorm2_getNFCInstance), text); };
    const struct {
        const char* name;
        library_find find;
        std::function<ustring(const ustring&)> form;
    } members[] = {
        {"case_sensitive", find_with(fl::i18n::case_sensitive()), [](const ustring& text) { return text; }},
        {"case_insensitive", find_with(fl::i18n::case_insensitive()), upper},
        {"normalized_case_sensitive", find_with(fl::i18n::normalized_case_sensitive()), nfc},
        {"normalized_case_insensitive", find_with(fl::i18n::normalized_case_insensitive()),
         [&](const ustring& text) { return upper(nfc(text)); }},
    };
    std::mt19937 rng(random_text_seed);
    for (int round = 0; round < 300; ++round) {
        // Every tenth haystack is longer than the stack buffer once transformed.
        ustring haystack = random_text(rng, 40);
        if (round % 10 == 9)
            haystack = ustring(1100, u'\u00DF') + haystack;
        const std::size_t start = std::uniform_int_distribution<std::size_t>(0, haystack.size() - 1)(rng);
        const std::size_t count = std::uniform_int_distribution<std::size_t>(0, 6)(rng);
        ustring needle = round % 5 == 4 ? random_text(rng, 3) : haystack.substr(start, count);
        if (round % 3 == 1)
            needle = icu_result(icu_case(u_strToLower, ""), needle);
        SCOPED_TRACE(testing::Message() << "seed " << random_text_seed << ", round " << round << ", haystack "
                                        << testing::PrintToString(haystack) << ", needle "
                                        << testing::PrintToString(needle));
        for (const auto& member : members)
            EXPECT_EQ(member.find(haystack, needle), member.form(haystack).find(member.form(needle))) << member.name;
    }
}

TEST(Find, positions_count_units_of_the_transformed_haystack)
{
    const auto cs = find_with(fl::i18n::case_sensitive());
    const auto ci = find_with(fl::i18n::case_insensitive());
    const auto ncs = find_with(fl::i18n::normalized_case_sensitive());
    const auto nci = find_with(fl::i18n::normalized_case_insensitive());
    const struct {
        library_find find;
        std::u16string_view haystack;
        std::u16string_view needle;
        unsigned long expected;
    } rows[] = {
        {cs, u"", u"", 0},           {cs, {}, {}, 0},                     {cs, u"", u"a", tx::npos},
        {cs, u"ab", u"abc", tx::npos}, {cs, u"aab", u"ab", 1},            {cs, u"xyz", u"z", 2},
        {ci, u"Stra\u00DFe", u"sse", 4}, {ncs, u"caf\u00E9", u"e\u0301", 3}, {nci, u"CAFE\u0301", u"\u00E9", 3},
        {nci, u"", u"", 0},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.find(row.haystack, row.needle), row.expected) << "row " << &row - rows;
}

TEST(CompareAndFind, short_texts_allocate_nothing)
{
    const ustring a = u"Stra\u00DFe \uFB01 caf\u00E9 \u0391\u03B8\u03AE\u03BD\u03B1";
    const ustring b = u"STRASSE fi cafe\u0301 \u0391\u0398\u0389\u039D\u0391";
    const auto& members = compare_members();
    const long before = allocations.load();
    for (const auto& member : members)
        member.library(a.data(), a.size(), b.data(), b.size());
    EXPECT_EQ(tx::find(a, u"CAF", fl::i18n::normalized_case_insensitive()), 11UL);
    EXPECT_EQ(allocations.load(), before);
}

}  // namespace
}  // namespace compare_find_test
