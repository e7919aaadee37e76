// Transforms: every tag against raw ICU on random text, the buffer protocol, size limits, locale
// rules, removal of diacritics, the passes of do_transform_impl and use from many threads.

// do_transform_impl calls transform by qualified name, so the overload of a test's own tag must be
// declared before the template is.
#include <fl/i18n/ustring.hpp>

namespace transform_test {
/// Upper-cases like to_upper and counts the calls.
struct counting_upper {
    int* passes;
};
}  // namespace transform_test

namespace fl::i18n::detail {
unsigned long transform(char16_t* dest, unsigned long dest_capacity, const char16_t* src, unsigned long src_length,
                        const transform_test::counting_upper& tag);
}

#include "text_reference.hpp"

#include <fl/i18n/ctype_error.hpp>
#include <fl/i18n/locale.hpp>
#include <fl/i18n/text_compare.hpp>
#include <fl/i18n/transform.hpp>

#include <gtest/gtest.h>
#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

unsigned long fl::i18n::detail::transform(char16_t* dest, unsigned long dest_capacity, const char16_t* src,
                                          unsigned long src_length, const transform_test::counting_upper& tag)
{
    ++*tag.passes;
    return transform(dest, dest_capacity, src, src_length, to_upper());
}

namespace transform_test {
namespace {

namespace tx = fl::i18n::detail;
using fl::i18n::QxLocale;
using text_test::hex_units;
using text_test::icu_case;
using text_test::icu_normalizer;
using text_test::icu_result;
using text_test::icu_transform;
using text_test::random_text;
using text_test::random_text_seed;

using library_transform = std::function<unsigned long(char16_t*, unsigned long, const char16_t*, unsigned long)>;

template <class Tag>
library_transform with_tag(Tag tag)
{
    return [tag](char16_t* dest, unsigned long capacity, const char16_t* src, unsigned long length) {
        return tx::transform(dest, capacity, src, length, tag);
    };
}

const QxLocale& turkish()
{
    static const auto locale = QxLocale::createLocale("tr_TR");
    return *locale;
}

const QxLocale& posix()
{
    static const auto locale = QxLocale::createLocale("en_US_POSIX");
    return *locale;
}

struct transform_case {
    const char* name;
    library_transform library;
    icu_transform reference;
};

// Every member that hands its buffers straight to ICU.
const std::vector<transform_case>& icu_members()
{
    static const std::vector<transform_case> cases = {
        {"to_lower", with_tag(fl::i18n::to_lower()), icu_case(u_strToLower, "")},
        {"to_upper", with_tag(fl::i18n::to_upper()), icu_case(u_strToUpper, "")},
        {"to_lower_locale tr_TR", with_tag(fl::i18n::to_lower_locale(turkish())), icu_case(u_strToLower, "tr_TR")},
        {"to_upper_locale tr_TR", with_tag(fl::i18n::to_upper_locale(turkish())), icu_case(u_strToUpper, "tr_TR")},
        {"to_lower_locale en_US_POSIX", with_tag(fl::i18n::to_lower_locale(posix())),
         icu_case(u_strToLower, "en_US_POSIX")},
        {"to_upper_locale en_US_POSIX", with_tag(fl::i18n::to_upper_locale(posix())),
         icu_case(u_strToUpper, "en_US_POSIX")},
        {"to_nfc", with_tag(fl::i18n::to_nfc()), icu_normalizer(unorm2_getNFCInstance)},
        {"to_nfd", with_tag(fl::i18n::to_nfd()), icu_normalizer(unorm2_getNFDInstance)},
        {"to_nfkc", with_tag(fl::i18n::to_nfkc()), icu_normalizer(unorm2_getNFKCInstance)},
        {"to_nfkd", with_tag(fl::i18n::to_nfkd()), icu_normalizer(unorm2_getNFKDInstance)},
    };
    return cases;
}

TEST(Transform, matches_icu_at_every_capacity)
{
    std::mt19937 rng(random_text_seed);
    for (const auto& member : icu_members()) {
        for (int round = 0; round < 150; ++round) {
            const ustring text = random_text(rng, 40);
            SCOPED_TRACE(testing::Message() << member.name << ", seed " << random_text_seed << ", round " << round
                                            << ", text " << hex_units(text));
            const auto length = static_cast<int32_t>(text.size());
            UErrorCode status = U_ZERO_ERROR;
            const int32_t needed = member.reference(nullptr, 0, text.data(), length, &status);
            ASSERT_TRUE(status == U_BUFFER_OVERFLOW_ERROR || U_SUCCESS(status)) << u_errorName(status);
            ASSERT_GT(needed, 0);
            const auto expected_length = static_cast<unsigned long>(needed);
            EXPECT_EQ(member.library(nullptr, 0, text.data(), text.size()), expected_length);
            EXPECT_EQ(member.library(nullptr, 99, text.data(), text.size()), expected_length);
            for (const int32_t capacity : {0, 1, needed - 1, needed, needed + 1}) {
                std::vector<char16_t> expected(static_cast<std::size_t>(needed) + 2, u'\xFFFF');
                std::vector<char16_t> actual = expected;
                status = U_ZERO_ERROR;
                member.reference(expected.data(), capacity, text.data(), length, &status);
                EXPECT_EQ(member.library(actual.data(), static_cast<unsigned long>(capacity), text.data(), text.size()),
                          expected_length);
                EXPECT_EQ(actual, expected) << "capacity " << capacity;
            }
        }
    }
}

TEST(Transform, empty_source_returns_zero_and_leaves_dest_alone)
{
    for (const auto& member : icu_members()) {
        SCOPED_TRACE(member.name);
        char16_t dest[4] = {u'x', u'x', u'x', u'x'};
        EXPECT_EQ(member.library(dest, 4, nullptr, 0), 0UL);
        EXPECT_EQ(member.library(dest, 4, nullptr, 5), 0UL);
        EXPECT_EQ(member.library(dest, 4, u"abc", 0), 0UL);
        EXPECT_EQ(member.library(nullptr, 0, nullptr, 0), 0UL);
        EXPECT_EQ(ustring(dest, 4), u"xxxx");
    }
}

TEST(Transform, lengths_of_2_to_the_31_throw_before_reading)
{
    std::vector<transform_case> members = icu_members();
    members.push_back({"to_no_diacritics", with_tag(fl::i18n::to_no_diacritics()), nullptr});
    const char16_t one[] = u"a";
    for (const auto& member : members) {
        SCOPED_TRACE(member.name);
        char16_t dest[4] = {};
        for (const unsigned long huge : {0x80000000UL, 0xFFFFFFFFUL, ~0UL}) {
            EXPECT_THROW(member.library(dest, 4, one, huge), fl::i18n::CtypeSizeTooLarge);
            EXPECT_THROW(member.library(nullptr, 0, one, huge), fl::i18n::CtypeSizeTooLarge);
            if (member.reference) {
                EXPECT_THROW(member.library(dest, huge, one, 1), fl::i18n::CtypeSizeTooLarge);
                // A pre-flight ignores the capacity it is given.
                EXPECT_EQ(member.library(nullptr, huge, one, 1), 1UL);
            }
        }
    }
    EXPECT_THROW(tx::do_transform(one, 0x80000000UL, fl::i18n::to_no_diacritics()), fl::i18n::CtypeSizeTooLarge);
}

TEST(Transform, icu_failure_carries_the_status)
{
    // The normalisers refuse to work in place; case mapping copies an overlapping source first.
    for (const auto& member : icu_members()) {
        if (std::string(member.name).compare(0, 4, "to_n") != 0)
            continue;
        SCOPED_TRACE(member.name);
        char16_t text[8] = u"abc";
        try {
            member.library(text, 8, text, 3);
            ADD_FAILURE() << "no exception";
        } catch (const fl::i18n::CtypeTransformFailure& e) {
            EXPECT_EQ(e.get_error_code(), U_ILLEGAL_ARGUMENT_ERROR);
            EXPECT_STREQ(e.what(), "Transformation failure.");
        }
    }
}

struct sized_example {
    const char* name;
    library_transform library;
    ustring src;
    bool null_dest;
    unsigned long capacity;
    unsigned long expected;
    const char16_t* written;  // null: not checked
};

TEST(Transform, reports_the_size_it_needs)
{
    const auto upper = with_tag(fl::i18n::to_upper());
    const auto no_marks = with_tag(fl::i18n::to_no_diacritics());
    const sized_example examples[] = {
        {"sharp s upper-cased into 1", upper, u"\u00DF", false, 1, 2, nullptr},
        {"sharp s upper-cased, pre-flight", upper, u"\u00DF", true, 0, 2, nullptr},
        {"e acute decomposed into 1", with_tag(fl::i18n::to_nfd()), u"\u00E9", false, 1, 2, nullptr},
        {"e acute without marks into 10", no_marks, u"\u00E9", false, 10, 10, u"e"},
        {"e acute without marks, pre-flight", no_marks, u"\u00E9", true, 0, 1, nullptr},
        {"e acute without marks into 1", no_marks, u"\u00E9", false, 1, 1, u"e"},
        {"Angstrom without marks into 3", no_marks, u"\u00C5ngstr\u00F6m", false, 3, 8, u"Ang"},
        {"empty text without marks into 4", no_marks, u"", false, 4, 4, u""},
    };
    for (const auto& example : examples) {
        SCOPED_TRACE(example.name);
        std::vector<char16_t> dest(example.capacity + 1, u'#');
        char16_t* const out = example.null_dest ? nullptr : dest.data();
        EXPECT_EQ(example.library(out, example.capacity, example.src.data(), example.src.size()), example.expected);
        if (example.written != nullptr) {
            const ustring written(example.written);
            EXPECT_EQ(ustring(dest.data(), written.size()), written);
            EXPECT_EQ(dest[written.size()], u'#');
        }
    }
}

TEST(TransformLocale, turkish_rules_only_with_a_turkish_ctype)
{
    const auto turkish_ctype = QxLocale::createLocale("en_US", QxLocale::lc_ctype, "tr_TR");
    const auto english_ctype = QxLocale::createLocale("tr_TR", QxLocale::lc_ctype, "en_US");
    struct example {
        const char* name;
        library_transform library;
        ustring src;
        ustring expected;
    };
    const example examples[] = {
        {"root upper", with_tag(fl::i18n::to_upper()), u"i", u"I"},
        {"root lower", with_tag(fl::i18n::to_lower()), u"I", u"i"},
        {"Turkish upper", with_tag(fl::i18n::to_upper_locale(turkish())), u"i\u0131", u"\u0130I"},
        {"Turkish lower", with_tag(fl::i18n::to_lower_locale(turkish())), u"I\u0130", u"\u0131i"},
        {"Turkish ctype upper", with_tag(fl::i18n::to_upper_locale(*turkish_ctype)), u"i", u"\u0130"},
        {"English ctype upper", with_tag(fl::i18n::to_upper_locale(*english_ctype)), u"i", u"I"},
        {"English ctype lower", with_tag(fl::i18n::to_lower_locale(*english_ctype)), u"I", u"i"},
    };
    for (const auto& e : examples) {
        SCOPED_TRACE(e.name);
        char16_t dest[8] = {};
        const unsigned long length = e.library(dest, 8, e.src.data(), e.src.size());
        EXPECT_EQ(ustring(dest, length), e.expected);
    }
}

// Records the categories it is asked for; without a name it throws.
class spy_locale final : public QxLocale {
public:
    explicit spy_locale(std::string name) : name_(std::move(name)) {}
    mutable std::vector<LcCategory> asked;

    std::string getName(LcCategory category) const override
    {
        asked.push_back(category);
        if (name_.empty())
            throw std::runtime_error("no name");
        return name_;
    }
    bool operator==(const QxLocale&) const override { return false; }
    bool operator!=(const QxLocale&) const override { return true; }
    std::string getLanguage(LcCategory, int) const override { return {}; }
    std::string getTerritory(LcCategory) const override { return {}; }
    std::string getModifiers(LcCategory) const override { return {}; }
    std::string getExtras(LcCategory) const override { return {}; }
    std::string getEncoding() const override { return {}; }
    std::string getDefaultEncoding() const override { return {}; }
    LocaleData getLocaleData(fl::i18n::QxLcOptDataCtx::LcOptDataType) const override { return std::string(); }

private:
    std::string name_;
};

TEST(TransformLocale, asks_for_the_ctype_name_first_even_for_empty_text)
{
    const spy_locale turkish_spy("tr_TR");
    char16_t dest[4] = {};
    EXPECT_EQ(tx::transform(dest, 4, nullptr, 0, fl::i18n::to_upper_locale(turkish_spy)), 0UL);
    EXPECT_EQ(tx::transform(dest, 4, u"i", 1, fl::i18n::to_lower_locale(turkish_spy)), 1UL);
    EXPECT_EQ(turkish_spy.asked, (std::vector<QxLocale::LcCategory>{QxLocale::lc_ctype, QxLocale::lc_ctype}));

    const spy_locale nameless("");
    EXPECT_THROW(tx::transform(dest, 4, nullptr, 0, fl::i18n::to_lower_locale(nameless)), std::runtime_error);
    EXPECT_THROW(tx::transform(dest, 4, u"", 0, fl::i18n::to_upper_locale(nameless)), std::runtime_error);
}

// Decomposition, removal of every non-spacing mark and composition, each straight from ICU.
ustring icu_without_marks(const ustring& text)
{
    const ustring decomposed = icu_result(icu_normalizer(unorm2_getNFDInstance), text);
    ustring kept;
    for (std::size_t i = 0; i < decomposed.size();) {
        const std::size_t start = i;
        UChar32 c;
        U16_NEXT(decomposed.data(), i, decomposed.size(), c);
        if (u_charType(c) != U_NON_SPACING_MARK)
            kept.append(decomposed, start, i - start);
    }
    return icu_result(icu_normalizer(unorm2_getNFCInstance), kept);
}

TEST(TransformNoDiacritics, matches_decompose_filter_compose)
{
    std::mt19937 rng(random_text_seed);
    int grown = 0;
    int shortened = 0;
    for (int round = 0; round < 400; ++round) {
        const ustring text = random_text(rng, 30);
        SCOPED_TRACE(testing::Message() << "seed " << random_text_seed << ", round " << round << ", text "
                                        << hex_units(text));
        const ustring expected = icu_without_marks(text);
        shortened += expected.size() < text.size() ? 1 : 0;
        if (expected.size() > text.size()) {
            ++grown;
            EXPECT_THROW(tx::do_transform(text.data(), text.size(), fl::i18n::to_no_diacritics()),
                         fl::i18n::CtypeTransformFailure);
            continue;
        }
        EXPECT_EQ(tx::do_transform(text.data(), text.size(), fl::i18n::to_no_diacritics()), expected);
        for (const unsigned long capacity : {0UL, 1UL, expected.size() / 2, expected.size()}) {
            std::vector<char16_t> dest(capacity + 1, u'#');
            EXPECT_EQ(tx::transform(dest.data(), capacity, text.data(), text.size(), fl::i18n::to_no_diacritics()),
                      std::max<unsigned long>(capacity, expected.size()));
            const std::size_t copied = std::min<std::size_t>(capacity, expected.size());
            EXPECT_EQ(ustring(dest.data(), copied), expected.substr(0, copied));
            EXPECT_EQ(dest[copied], u'#');
        }
    }
    // The random text must reach both the failure and the removal.
    EXPECT_GT(grown, 0);
    EXPECT_GT(shortened, 0);
}

TEST(TransformNoDiacritics, keeps_what_has_no_mark)
{
    const struct {
        ustring text;
        ustring expected;
    } examples[] = {
        {u"\u00C5ngstr\u00F6m", u"Angstrom"},
        {u"Ti\u1EBFng Vi\u1EC7t", u"Tieng Viet"},
        {u"\u0395\u03BB\u03BB\u03B7\u03BD\u03B9\u03BA\u03AC", u"\u0395\u03BB\u03BB\u03B7\u03BD\u03B9\u03BA\u03B1"},
        {u"plain text 123", u"plain text 123"},
        {u"\uFB01", u"\uFB01"},  // no compatibility step: the ligature stays
        {u"\u4E2D\U0001F600\xD800", u"\u4E2D\U0001F600\xD800"},
        {u"", u""},
    };
    for (const auto& e : examples) {
        SCOPED_TRACE(hex_units(e.text));
        EXPECT_EQ(tx::do_transform(e.text.data(), e.text.size(), fl::i18n::to_no_diacritics()), e.expected);
        ustring in_place = e.text;
        EXPECT_EQ(&tx::do_transform(in_place, fl::i18n::to_no_diacritics()), &in_place);
        EXPECT_EQ(in_place, e.expected);
    }
    EXPECT_EQ(tx::do_transform(nullptr, 0, fl::i18n::to_no_diacritics()), u"");
    EXPECT_THROW(tx::do_transform(nullptr, 1, fl::i18n::to_no_diacritics()), std::logic_error);
    EXPECT_THROW(tx::transform(nullptr, 0, nullptr, 1, fl::i18n::to_no_diacritics()), std::logic_error);
}

TEST(TransformNoDiacritics, an_output_longer_than_the_input_fails)
{
    // U+1D15E decomposes to a note and a spacing mark, which stay and do not recompose.
    const ustring half_note = u"\U0001D15E";
    try {
        tx::do_transform(half_note.data(), half_note.size(), fl::i18n::to_no_diacritics());
        ADD_FAILURE() << "no exception";
    } catch (const fl::i18n::CtypeTransformFailure& e) {
        EXPECT_EQ(e.get_error_code(), U_BUFFER_OVERFLOW_ERROR);
    }
    char16_t dest[8];
    EXPECT_THROW(tx::transform(dest, 8, half_note.data(), half_note.size(), fl::i18n::to_no_diacritics()),
                 fl::i18n::CtypeTransformFailure);
}

TEST(DoTransformImpl, a_second_pass_only_above_1024_units)
{
    const struct {
        ustring text;
        int passes;
    } examples[] = {
        {u"", 1},
        {ustring(1024, u'a'), 1},
        {ustring(1025, u'a'), 2},
        {ustring(512, u'\u00DF'), 1},  // 1024 units once upper-cased
        {ustring(513, u'\u00DF'), 2},
        {ustring(3000, u'z'), 2},
    };
    const icu_transform icu_upper = icu_case(u_strToUpper, "");
    for (const auto& e : examples) {
        SCOPED_TRACE(testing::Message() << e.text.size() << " units");
        int passes = 0;
        const ustring result = foundation::ustring::detail::do_transform_impl(e.text.data(), e.text.size(),
                                                                             counting_upper{&passes});
        EXPECT_EQ(passes, e.passes);
        const ustring expected = e.text.empty() ? ustring() : icu_result(icu_upper, e.text);
        EXPECT_EQ(result, expected);
        EXPECT_EQ(foundation::ustring::detail::do_transform_impl(e.text.data(), e.text.size(), fl::i18n::to_upper()),
                  expected);
    }
}

TEST(DoTransformImpl, library_instantiations_match_icu)
{
    std::mt19937 rng(random_text_seed);
    const icu_transform icu_nfc = icu_normalizer(unorm2_getNFCInstance);
    const icu_transform icu_upper = icu_case(u_strToUpper, "");
    for (int round = 0; round < 50; ++round) {
        const ustring text = random_text(rng, round % 2 == 0 ? 60 : 2000);
        SCOPED_TRACE(testing::Message() << "seed " << random_text_seed << ", round " << round);
        using foundation::ustring::detail::do_transform_impl;
        EXPECT_EQ(do_transform_impl(text.data(), text.size(), fl::i18n::to_nfc()), icu_result(icu_nfc, text));
        EXPECT_EQ(do_transform_impl(text.data(), text.size(), fl::i18n::to_upper()), icu_result(icu_upper, text));
    }
}

int sign(int value) { return (value > 0) - (value < 0); }

// The reference comes from raw ICU, so that the threads are the first users of the shared
// transliterator when this test runs in a process of its own.
TEST(TextEngineThreads, diacritics_and_comparison_agree_with_one_thread)
{
    std::mt19937 rng(random_text_seed);
    std::vector<ustring> texts;
    std::vector<ustring> without_marks;
    std::vector<int> orders;
    while (texts.size() < 64) {
        ustring text = random_text(rng, 30);
        ustring expected = icu_without_marks(text);
        if (expected.size() > text.size())
            continue;  // would grow, which the transliteration refuses
        texts.push_back(std::move(text));
        without_marks.push_back(std::move(expected));
    }
    const auto order = [&](std::size_t i) {
        const ustring& a = texts[i];
        const ustring& b = without_marks[(i + 1) % texts.size()];
        return sign(tx::compare(a.data(), a.size(), b.data(), b.size(),
                                fl::i18n::normalized_compatibility_case_insensitive()));
    };
    for (std::size_t i = 0; i < texts.size(); ++i)
        orders.push_back(order(i));

    std::atomic<int> mismatches{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&, t] {
            for (int round = 0; round < 40; ++round) {
                for (std::size_t k = 0; k < texts.size(); ++k) {
                    const std::size_t i = (k + static_cast<std::size_t>(t) * 7) % texts.size();
                    const ustring& text = texts[i];
                    if (tx::do_transform(text.data(), text.size(), fl::i18n::to_no_diacritics()) != without_marks[i])
                        ++mismatches;
                    if (order(i) != orders[i])
                        ++mismatches;
                }
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(mismatches.load(), 0);
}

}  // namespace
}  // namespace transform_test
