// Tests of the text engine's exceptions, the handling-mode mask and the natural-sort exceptions.
#include <fl/i18n/character_handling.hpp>
#include <fl/i18n/ctype_error.hpp>
#include <fl/i18n/natural_sort_error.hpp>

#include <gtest/gtest.h>

#include <boost/exception/exception.hpp>
#include <boost/exception_ptr.hpp>

#include <functional>
#include <memory>
#include <thread>

namespace {

using namespace fl::i18n;
using foundation::ustring::CtypeExceptionBase;
using foundation::ustring::CtypeInvalidCharacter;

TEST(CtypeExceptionBase, IdsMessagesAndErrorCodes)
{
    struct row {
        std::function<std::unique_ptr<CtypeExceptionBase>()> make;
        foundation::ustring::ctype_excp_id id;
        const char* message;
        int error_code;
    };
    const row rows[] = {
        {[] { return std::make_unique<CtypeSizeTooLarge>(); }, foundation::ustring::ctype_size_too_large,
         "Data size too large.", 0},
        {[] { return std::make_unique<CtypeTransformFailure>(10); }, foundation::ustring::ctype_transform_failure,
         "Transformation failure.", 10},
        {[] { return std::make_unique<CtypeStrCompFailure>(); }, foundation::ustring::ctype_str_comp_failure,
         "String comparison failure.", 0},
        {[] { return std::make_unique<CtypeInvalidCharacter>(); }, foundation::ustring::ctype_invalid_character,
         "Invalid character error.", 0},
        {[] { return std::make_unique<CtypeInvalidArgument>(); }, foundation::ustring::ctype_invalid_argument,
         "Invalid argument error.", 0},
    };
    for (const row& r : rows) {
        const auto e = r.make();
        EXPECT_EQ(e->get_id(), r.id);
        EXPECT_EQ(static_cast<int>(r.id), &r - rows) << "ids number the classes in order";
        EXPECT_STREQ(static_cast<const std::exception&>(*e).what(), r.message);
        EXPECT_EQ(e->get_error_code(), r.error_code);
    }
}

TEST(CtypeExceptionBase, InvalidCharacterIsThrownWrappedAndCrossesThreads)
{
    const auto raise = [] { foundation::ustring::detail::throw_ctype_invalid_character_exception(); };
    EXPECT_THROW(raise(), boost::exception_detail::clone_impl<CtypeInvalidCharacter>);
    try {
        raise();
    } catch (const CtypeExceptionBase& e) {
        EXPECT_EQ(e.get_id(), foundation::ustring::ctype_invalid_character);
    }
    // Captured in one thread, it must come back with its exact type in another.
    boost::exception_ptr captured;
    std::thread([&] {
        try {
            raise();
        } catch (...) {
            captured = boost::current_exception();
        }
    }).join();
    ASSERT_TRUE(captured);
    EXPECT_THROW(boost::rethrow_exception(captured), CtypeInvalidCharacter);
}

TEST(CharacterHandlingModeContext, AcceptsEveryMaskUpTo31)
{
    for (unsigned int mask = 0; mask <= 31; ++mask)
        EXPECT_EQ(character_handling_mode_context(mask).get_mask(), mask);
    for (unsigned int mask : {32U, 33U, 0x80000000U, 0xFFFFFFFFU}) {
        EXPECT_THROW(character_handling_mode_context{mask}, boost::exception_detail::clone_impl<CtypeInvalidArgument>)
            << mask;
        try {
            character_handling_mode_context{mask};
        } catch (const CtypeExceptionBase& e) {
            EXPECT_EQ(e.get_id(), foundation::ustring::ctype_invalid_argument);
        }
    }
}

TEST(CharacterHandlingModeContext, Queries)
{
    using m = character_handling_mode_context;
    struct row {
        unsigned int mask;
        bool case_sensitive, compose, decompose, locale, normalization_insensitive;
    };
    const row rows[] = {
        {m::default_mode, true, false, false, false, false},
        {m::case_insensitive_mode, false, false, false, false, false},
        {m::normalized_compose_mode, true, true, false, false, false},
        {4, true, false, false, false, false},  // decomposed without normalised is neither
        {m::normalized_decompose_mode, true, false, true, false, false},
        {m::locale_mode, true, false, false, true, false},
        {m::normalization_insensitive_mode, true, false, false, false, true},
        {m::case_insensitive_mode | m::normalized_compose_mode | m::locale_mode, false, true, false, true, false},
        {31, false, false, true, true, true},
    };
    for (const row& r : rows) {
        const m mode(r.mask);
        EXPECT_EQ(mode.is_case_sensitive_mode(), r.case_sensitive) << r.mask;
        EXPECT_EQ(mode.is_normalized_compose_mode(), r.compose) << r.mask;
        EXPECT_EQ(mode.is_normalized_decompose_mode(), r.decompose) << r.mask;
        EXPECT_EQ(mode.is_locale_dependent_mode(), r.locale) << r.mask;
        EXPECT_EQ(mode.is_normalization_insensitive_mode(), r.normalization_insensitive) << r.mask;
    }
    EXPECT_EQ(m::normalized_decompose_mode, 6U);
    EXPECT_EQ(m::normalization_insensitive_mode, 16U);
}

template <class E>
void expect_message(const std::string& prefix)
{
    EXPECT_EQ(std::string(E("").what()), prefix);
    const E original("U_MEMORY_ALLOCATION_ERROR");
    const E copy(original);
    EXPECT_EQ(std::string(original.what()), prefix + "U_MEMORY_ALLOCATION_ERROR");
    EXPECT_STREQ(copy.what(), original.what());
    const std::exception& base = copy;
    EXPECT_STREQ(base.what(), original.what());
}

TEST(NaturalSortExceptions, MessageIsThePrefixFollowedByTheErrorCode)
{
    expect_message<NaturalSortCollatorException>("Failed to create ICU Collator. Following error code received: ");
    expect_message<NaturalSortCompareException>(
        "ICU Collator's compare operation failed. Following error code received: ");
}

}  // namespace
