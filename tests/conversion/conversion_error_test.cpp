// Tests of the conversion exceptions: texts and ids, the catch sites each one reaches, and
// transport across threads with boost::exception_ptr, for exceptions raised by real calls.
#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/conversion_error.hpp>

#include "conversion_test_support.hpp"

#include <boost/exception/exception.hpp>
#include <boost/exception_ptr.hpp>

#include <functional>
#include <optional>
#include <thread>
#include <type_traits>

namespace {

using namespace fl::i18n;

static_assert(std::is_abstract_v<CvtExceptionBase>);
static_assert(std::is_base_of_v<std::exception, CvtExceptionBase>);

struct kind {
    codecvt_excp_id id;
    const char* what;
};

template <class E>
void expect_kind(const E& e, const kind& k)
{
    static_assert(std::is_base_of_v<CvtExceptionBase, E>);
    EXPECT_EQ(e.get_id(), k.id);
    EXPECT_STREQ(e.what(), k.what);
    const E copy(e);
    EXPECT_EQ(copy.get_id(), k.id);
    EXPECT_STREQ(copy.what(), k.what);
}

TEST(CvtExceptionBase, TextAndIdOfEachClass)
{
    expect_kind(CvtInvalidArgument(), {cvt_invalid_argument, "fl:i18n:CvtInvalidArgument"});
    expect_kind(CvtInvalidEncodingName("x-nothing"), {cvt_invalid_encoding_name, "Invalid encoding name specified."});
    expect_kind(CvtCallBackSettingFailure(), {cvt_call_back_setting_failure, "fl:i18n:CvtCallBackSettingFailure"});
    expect_kind(CvtNonSupportedMode(), {cvt_non_supported_mode, "fl:i18n:CvtNonSupportedMode"});
    expect_kind(CvtInvalidCharacter(), {cvt_invalid_character, "Invalid character code sequence detected."});
    expect_kind(CvtSizeTooLarge(), {cvt_size_too_large, "Data size too large for character code conversion."});
    expect_kind(CvtConversionFailure(), {cvt_conversion_failure, "Failed to convert character code."});

    const CvtInvalidEncodingName named("x-nothing");
    const CvtInvalidEncodingName copy(named);
    EXPECT_EQ(named.get_encoding_name(), "x-nothing");
    EXPECT_EQ(copy.get_encoding_name(), "x-nothing");
    EXPECT_EQ(CvtInvalidEncodingName("").get_encoding_name(), "");
}

// Raises E through `call` and checks every catch site: E, the base, std::exception, Boost's
// cloning wrapper, and a rethrow in another thread of what one thread captured.
template <class E>
void expect_raised_as(const std::function<void()>& call, const kind& k, const char* encoding_name = nullptr)
{
    try {
        call();
        ADD_FAILURE() << "nothing thrown";
    } catch (const E& e) {
        expect_kind(e, k);
        if constexpr (std::is_same_v<E, CvtInvalidEncodingName>) {
            EXPECT_EQ(e.get_encoding_name(), encoding_name);
        }
    }
    try {
        call();
    } catch (const CvtExceptionBase& e) {
        EXPECT_EQ(e.get_id(), k.id);
        EXPECT_NE(dynamic_cast<const E*>(&e), nullptr);
    }
    try {
        call();
    } catch (const std::exception& e) {
        EXPECT_STREQ(e.what(), k.what);
    }
    try {
        call();
    } catch (const boost::exception_detail::clone_impl<E>& e) {
        EXPECT_EQ(e.get_id(), k.id);
    } catch (...) {
        ADD_FAILURE() << "not thrown inside boost::exception_detail::clone_impl";
    }

    boost::exception_ptr captured;
    std::thread([&] {
        try {
            call();
        } catch (...) {
            captured = boost::current_exception();
        }
    }).join();
    ASSERT_TRUE(captured);
    bool exact = false, wrapped = false;
    std::optional<codecvt_excp_id> id;
    std::string what;
    std::string name;
    std::thread([&] {
        try {
            boost::rethrow_exception(captured);
        } catch (const E& e) {
            exact = true;
            wrapped = dynamic_cast<const boost::exception_detail::clone_base*>(&e) != nullptr;
            id = e.get_id();
            what = e.what();
            if constexpr (std::is_same_v<E, CvtInvalidEncodingName>) {
                name = e.get_encoding_name();
            }
        } catch (...) {
        }
    }).join();
    EXPECT_TRUE(exact) << "the rethrown exception lost its type";
    EXPECT_TRUE(wrapped);
    EXPECT_EQ(id, k.id);
    EXPECT_EQ(what, k.what);
    if (encoding_name) {
        EXPECT_EQ(name, encoding_name);
    }
}

TEST(CvtExceptionBase, RealFailuresReachEveryCatchSiteAndCrossThreads)
{
    {
        SCOPED_TRACE("CvtInvalidArgument");
        expect_raised_as<CvtInvalidArgument>(
            [] { codecvt_string_to_ustring("UTF-8", true).change_call_back(static_cast<codecvt_call_back_mode>(2)); },
            {cvt_invalid_argument, "fl:i18n:CvtInvalidArgument"});
    }
    {
        SCOPED_TRACE("CvtInvalidEncodingName");
        expect_raised_as<CvtInvalidEncodingName>([] { codecvt_ustring_to_string("x-no-such-charset", true); },
                                                 {cvt_invalid_encoding_name, "Invalid encoding name specified."},
                                                 "x-no-such-charset");
    }
    {
        SCOPED_TRACE("CvtCallBackSettingFailure");
        // ICU refuses a substitution longer than the encoding's longest character.
        expect_raised_as<CvtCallBackSettingFailure>(
            [] { codecvt_ustring_to_string("ISO-8859-1", true).change_call_back(cvt_call_back_substitute, "ab"); },
            {cvt_call_back_setting_failure, "fl:i18n:CvtCallBackSettingFailure"});
    }
    {
        SCOPED_TRACE("CvtNonSupportedMode");
        expect_raised_as<CvtNonSupportedMode>(
            [] { codecvt_string_to_ustring("UTF-8", true).change_call_back(cvt_call_back_not_implemented); },
            {cvt_non_supported_mode, "fl:i18n:CvtNonSupportedMode"});
    }
    {
        SCOPED_TRACE("CvtInvalidCharacter");
        expect_raised_as<CvtInvalidCharacter>([] { codecvt_string_to_ustring("UTF-8", false).convert("\xFF", 1); },
                                              {cvt_invalid_character, "Invalid character code sequence detected."});
    }
    {
        SCOPED_TRACE("CvtSizeTooLarge");
        expect_raised_as<CvtSizeTooLarge>(
            [] { codecvt_ustring_to_string("UTF-8", true).change_call_back(cvt_call_back_substitute, std::string(128, 'x')); },
            {cvt_size_too_large, "Data size too large for character code conversion."});
    }
    {
        SCOPED_TRACE("CvtConversionFailure");
        expect_raised_as<CvtConversionFailure>(
            [] { codecvt_string_to_ustring("UTF-8", false).convert("\xE3\x81", 2); },
            {cvt_conversion_failure, "Failed to convert character code."});
    }
}

}  // namespace
