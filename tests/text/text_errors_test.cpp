// Tests of the text engine's exceptions, the handling-mode mask and the natural-sort exceptions.
#include <fl/i18n/character_handling.hpp>
#include <fl/i18n/ctype_error.hpp>
#include <fl/i18n/natural_sort_error.hpp>

#include <gtest/gtest.h>

#include <boost/exception/exception.hpp>
#include <boost/exception_ptr.hpp>

#include <thread>

namespace {

using namespace fl::i18n;
using foundation::ustring::CtypeExceptionBase;
using foundation::ustring::CtypeInvalidCharacter;

TEST(CtypeExceptionBase, IdsMessagesAndErrorCodes)
{
    const CtypeSizeTooLarge size;
    const CtypeTransformFailure transform(10);
    const CtypeStrCompFailure compare;
    const CtypeInvalidCharacter character;
    const CtypeInvalidArgument argument;
    const struct {
        const CtypeExceptionBase& e;
        const char* message;
        int error_code;
    } rows[] = {
        {size, "Data size too large.", 0},       {transform, "Transformation failure.", 10},
        {compare, "String comparison failure.", 0}, {character, "Invalid character error.", 0},
        {argument, "Invalid argument error.", 0},
    };
    for (const auto& r : rows) {
        EXPECT_EQ(static_cast<int>(r.e.get_id()), &r - rows) << "ids number the classes in order";
        EXPECT_STREQ(static_cast<const std::exception&>(r.e).what(), r.message);
        EXPECT_EQ(r.e.get_error_code(), r.error_code);
    }
}

TEST(CtypeExceptionBase, InvalidCharacterIsThrownWrappedAndCrossesThreads)
{
    // Captured in one thread, it must come back with its exact type in another.
    boost::exception_ptr captured;
    std::thread([&] {
        try {
            foundation::ustring::detail::throw_ctype_invalid_character_exception();
        } catch (...) {
            captured = boost::current_exception();
        }
    }).join();
    ASSERT_TRUE(captured);
    EXPECT_THROW(boost::rethrow_exception(captured), boost::exception_detail::clone_impl<CtypeInvalidCharacter>);
}

TEST(CharacterHandlingModeContext, AcceptsEveryMaskUpTo31)
{
    for (unsigned int mask = 0; mask <= 31; ++mask)
        EXPECT_EQ(character_handling_mode_context(mask).get_mask(), mask);
    for (unsigned int mask : {32U, 33U, 0x80000000U, 0xFFFFFFFFU})
        EXPECT_THROW(character_handling_mode_context{mask}, boost::exception_detail::clone_impl<CtypeInvalidArgument>)
            << mask;
}

TEST(CharacterHandlingModeContext, Queries)
{
    using m = character_handling_mode_context;
    const struct {
        unsigned int mask;
        bool case_sensitive, compose, decompose, locale, normalization_insensitive;
    } rows[] = {
        {m::default_mode, true, false, false, false, false},
        {m::case_insensitive_mode, false, false, false, false, false},
        {m::normalized_compose_mode, true, true, false, false, false},
        {m::normalized_decompose_mode, true, false, true, false, false},
        {m::locale_mode, true, false, false, true, false},
        {m::normalization_insensitive_mode, true, false, false, false, true},
        {4, true, false, false, false, false},  // decomposed without normalised is neither
        {1 | 2 | 8, false, true, false, true, false},         {31, false, false, true, true, true},
    };
    for (const auto& r : rows) {
        const m mode(r.mask);
        EXPECT_EQ(mode.is_case_sensitive_mode(), r.case_sensitive) << r.mask;
        EXPECT_EQ(mode.is_normalized_compose_mode(), r.compose) << r.mask;
        EXPECT_EQ(mode.is_normalized_decompose_mode(), r.decompose) << r.mask;
        EXPECT_EQ(mode.is_locale_dependent_mode(), r.locale) << r.mask;
        EXPECT_EQ(mode.is_normalization_insensitive_mode(), r.normalization_insensitive) << r.mask;
    }
}

TEST(NaturalSortExceptions, MessageIsThePrefixFollowedByTheErrorCode)
{
    const NaturalSortCollatorException create("U_MEMORY_ALLOCATION_ERROR");
    const NaturalSortCompareException compare("");
    EXPECT_STREQ(static_cast<const std::exception&>(create).what(),
                 "Failed to create ICU Collator. Following error code received: U_MEMORY_ALLOCATION_ERROR");
    EXPECT_STREQ(static_cast<const std::exception&>(compare).what(),
                 "ICU Collator's compare operation failed. Following error code received: ");
}

}  // namespace
