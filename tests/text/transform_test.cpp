// Transforms: every tag against raw ICU on random text, the buffer protocol, size limits, failures,
// locale lookup, removal of diacritics (also from many threads) and the passes of do_transform_impl.

// do_transform_impl calls transform by qualified name, so the overload for the test's own tag must
// be declared before the template is.
#include <fl/i18n/ustring.hpp>

namespace transform_test {
struct counting_upper {  // upper-cases like to_upper and counts the calls
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
#include <fl/i18n/transform.hpp>

#include <gtest/gtest.h>
#include <unicode/uchar.h>
#include <unicode/utf16.h>

#include <atomic>
#include <stdexcept>
#include <thread>
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
using namespace text_test;
using fl::i18n::QxLocale;

using library_transform = std::function<unsigned long(char16_t*, unsigned long, const char16_t*, unsigned long)>;

template <class Tag>
library_transform with_tag(Tag tag)
{
    return [tag](char16_t* dest, unsigned long capacity, const char16_t* src, unsigned long length) {
        return tx::transform(dest, capacity, src, length, tag);
    };
}

struct transform_case {
    const char* name;
    library_transform library;
    icu_transform reference;
};

// Every member that hands its buffers straight to ICU.
const std::vector<transform_case>& icu_members()
{
    static const auto tr = QxLocale::createLocale("tr_TR");
    static const std::vector<transform_case> cases = {
        {"to_lower", with_tag(fl::i18n::to_lower()), icu_case(u_strToLower, "")},
        {"to_upper", with_tag(fl::i18n::to_upper()), icu_case(u_strToUpper, "")},
        {"to_lower_locale tr_TR", with_tag(fl::i18n::to_lower_locale(*tr)), icu_case(u_strToLower, "tr_TR")},
        {"to_upper_locale tr_TR", with_tag(fl::i18n::to_upper_locale(*tr)), icu_case(u_strToUpper, "tr_TR")},
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
                                            << ", text " << testing::PrintToString(text));
            const auto length = static_cast<int32_t>(text.size());
            UErrorCode status = U_ZERO_ERROR;
            const int32_t needed = member.reference(nullptr, 0, text.data(), length, &status);
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
        // A null or empty source gives 0 and leaves the destination alone.
        char16_t dest[4] = {u'#', u'#', u'#', u'#'};
        using source = std::pair<const char16_t*, unsigned long>;
        for (const auto& [src, length] : {source{nullptr, 0}, source{nullptr, 5}, source{u"a", 0}})
            EXPECT_EQ(member.library(dest, 4, src, length) + member.library(nullptr, 0, src, length), 0UL) << length;
        EXPECT_EQ(ustring(dest, 4), u"####");
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
                EXPECT_EQ(member.library(nullptr, huge, one, 1), 1UL);  // a pre-flight ignores the capacity
            }
        }
    }
    EXPECT_THROW(tx::do_transform(one, 0x80000000UL, fl::i18n::to_no_diacritics()), fl::i18n::CtypeSizeTooLarge);
}

TEST(Transform, icu_failures_carry_the_status)
{
    // The normalisers refuse to work in place. U+1D15E loses no mark but does not recompose, so
    // removing diacritics would grow it, which the transliteration in place cannot do.
    char16_t text[8] = u"abc";
    const ustring half_note = u"\U0001D15E";
    const struct {
        const char* name;
        library_transform library;
        const char16_t* src;
        unsigned long length;
        UErrorCode status;
    } rows[] = {
        {"to_nfc", with_tag(fl::i18n::to_nfc()), text, 3, U_ILLEGAL_ARGUMENT_ERROR},
        {"to_nfd", with_tag(fl::i18n::to_nfd()), text, 3, U_ILLEGAL_ARGUMENT_ERROR},
        {"to_nfkc", with_tag(fl::i18n::to_nfkc()), text, 3, U_ILLEGAL_ARGUMENT_ERROR},
        {"to_nfkd", with_tag(fl::i18n::to_nfkd()), text, 3, U_ILLEGAL_ARGUMENT_ERROR},
        {"to_no_diacritics", with_tag(fl::i18n::to_no_diacritics()), half_note.data(), 2, U_BUFFER_OVERFLOW_ERROR},
    };
    for (const auto& row : rows) {
        try {
            row.library(text, 8, row.src, row.length);
            ADD_FAILURE() << row.name << ": no exception";
        } catch (const fl::i18n::CtypeTransformFailure& e) {
            EXPECT_EQ(e.get_error_code(), row.status) << row.name;
            EXPECT_STREQ(e.what(), "Transformation failure.");
        }
    }
    EXPECT_THROW(tx::do_transform(nullptr, 1, fl::i18n::to_no_diacritics()), std::logic_error);
    EXPECT_THROW(tx::transform(nullptr, 0, nullptr, 1, fl::i18n::to_no_diacritics()), std::logic_error);
}

// A Turkish ctype in an English locale; without a name it throws.
class spy_locale final : public QxLocale {
public:
    explicit spy_locale(std::string ctype) : ctype_(std::move(ctype)) {}
    std::string getName(LcCategory category) const override
    {
        if (ctype_.empty())
            throw std::runtime_error("no name");
        return category == lc_ctype ? ctype_ : "en_US";
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
    std::string ctype_;
};

TEST(TransformLocale, takes_the_ctype_name_first_even_for_empty_text)
{
    const spy_locale turkish("tr_TR");
    const spy_locale nameless("");
    char16_t dest[4] = {};
    EXPECT_EQ(tx::transform(dest, 4, u"i", 1, fl::i18n::to_upper_locale(turkish)), 1UL);
    EXPECT_EQ(dest[0], u'\u0130');
    EXPECT_EQ(tx::transform(dest, 4, u"I", 1, fl::i18n::to_lower_locale(turkish)), 1UL);
    EXPECT_EQ(dest[0], u'\u0131');
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
    const fl::i18n::to_no_diacritics tag;
    std::mt19937 rng(random_text_seed);
    int grown = 0;
    int shortened = 0;
    for (int round = 0; round < 400; ++round) {
        const ustring text = random_text(rng, 30);
        SCOPED_TRACE(testing::Message() << "seed " << random_text_seed << ", round " << round << ", text "
                                        << testing::PrintToString(text));
        const ustring expected = icu_without_marks(text);
        ustring in_place = text;
        if (expected.size() > text.size()) {
            ++grown;
            EXPECT_THROW(tx::do_transform(in_place, tag), fl::i18n::CtypeTransformFailure);
            continue;
        }
        shortened += expected.size() < text.size() ? 1 : 0;
        EXPECT_EQ(tx::do_transform(text.data(), text.size(), tag), expected);
        EXPECT_EQ(&tx::do_transform(in_place, tag), &in_place);
        EXPECT_EQ(in_place, expected);
        EXPECT_EQ(tx::transform(nullptr, 99, text.data(), text.size(), tag), expected.size());
        // The return is max(result, capacity), so a capacity above the result comes back as it is.
        for (const unsigned long capacity : {0UL, 1UL, expected.size() / 2, expected.size(), expected.size() + 3}) {
            std::vector<char16_t> dest(capacity + 1, u'#');
            EXPECT_EQ(tx::transform(dest.data(), capacity, text.data(), text.size(), tag),
                      std::max(capacity, expected.size()));
            const std::size_t copied = std::min<std::size_t>(capacity, expected.size());
            EXPECT_EQ(ustring(dest.data(), copied), expected.substr(0, copied));
            EXPECT_EQ(dest[copied], u'#');
        }
    }
    EXPECT_GT(grown, 0);  // the random text must reach both the failure and the removal
    EXPECT_GT(shortened, 0);
    EXPECT_EQ(tx::do_transform(nullptr, 0, tag), u"");
    char16_t dest[4];
    EXPECT_EQ(tx::transform(dest, 4, u"", 0, tag), 4UL);
}

// The reference comes from raw ICU, so that the threads are the first users of the shared
// transliterator when this test runs in a process of its own.
TEST(TransformNoDiacritics, threads_agree_with_one_thread)
{
    std::mt19937 rng(random_text_seed);
    std::vector<std::pair<ustring, ustring>> cases;  // text and its form without marks
    while (cases.size() < 64) {
        const ustring text = random_text(rng, 30);
        if (const ustring expected = icu_without_marks(text); expected.size() <= text.size())
            cases.emplace_back(text, expected);  // a text that would grow is refused
    }
    std::atomic<int> mismatches{0};
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < 8; ++t) {
        threads.emplace_back([&, t] {
            for (std::size_t k = 0; k < 40 * cases.size(); ++k) {
                const auto& [text, expected] = cases[(k + t * 7) % cases.size()];
                if (tx::do_transform(text.data(), text.size(), fl::i18n::to_no_diacritics()) != expected)
                    ++mismatches;
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(mismatches.load(), 0);
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
    for (const auto& e : examples) {
        int passes = 0;
        using foundation::ustring::detail::do_transform_impl;
        const ustring result = do_transform_impl(e.text.data(), e.text.size(), counting_upper{&passes});
        EXPECT_EQ(passes, e.passes) << e.text.size() << " units";
        const ustring expected = e.text.empty() ? ustring() : icu_result(icu_case(u_strToUpper, ""), e.text);
        EXPECT_EQ(result, expected) << e.text.size() << " units";
        EXPECT_EQ(do_transform_impl(e.text.data(), e.text.size(), fl::i18n::to_upper()), expected);
    }
}

}  // namespace
}  // namespace transform_test
