// Tests of the conversion exceptions: texts and ids, the catch sites each one reaches, and
// transport across threads with boost::exception_ptr, for exceptions raised by real calls.
#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/conversion_error.hpp>

#include "conversion_test_support.hpp"

#include <boost/exception/exception.hpp>
#include <boost/exception_ptr.hpp>

#include <functional>
#include <thread>
#include <type_traits>

namespace {

using namespace fl::i18n;

static_assert(std::is_abstract_v<CvtExceptionBase>);
static_assert(std::is_base_of_v<std::exception, CvtExceptionBase>);

// What a caught E reports, from the original or a copy: id, what() and the encoding name.
template <class E>
std::string describe(const E& e)
{
    const E copy(e);
    std::string name;
    if constexpr (std::is_same_v<E, CvtInvalidEncodingName>) name = " name " + copy.get_encoding_name();
    return std::to_string(copy.get_id()) + " " + copy.what() + name;
}

// Raises E through `call` and checks every catch site: E, the base, std::exception, Boost's
// cloning wrapper, and a rethrow in another thread of what one thread captured.
template <class E>
void expect_raised_as(const std::function<void()>& call, codecvt_excp_id id, const std::string& what,
                      const std::string& name = "")
{
    const std::string expected = std::to_string(id) + " " + what + (name.empty() ? "" : " name " + name);
    try {
        call();
        ADD_FAILURE() << "nothing thrown";
    } catch (const boost::exception_detail::clone_impl<E>& e) {
        EXPECT_EQ(describe<E>(e), expected);
        EXPECT_EQ(describe<E>(E(e)), expected) << "sliced copy";
    } catch (...) {
        ADD_FAILURE() << "not thrown as E inside boost::exception_detail::clone_impl";
    }
    try {
        call();
    } catch (const CvtExceptionBase& e) {
        EXPECT_EQ(e.get_id(), id);
        EXPECT_STREQ(static_cast<const std::exception&>(e).what(), what.c_str());
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
    std::string rethrown = "lost its type";
    std::thread([&] {
        try {
            boost::rethrow_exception(captured);
        } catch (const E& e) {
            rethrown = describe(e);
            if (!dynamic_cast<const boost::exception_detail::clone_base*>(&e)) rethrown += " unwrapped";
        } catch (...) {
        }
    }).join();
    EXPECT_EQ(rethrown, expected);
}

TEST(CvtExceptionBase, RealFailuresReachEveryCatchSiteAndCrossThreads)
{
    using mode = codecvt_call_back_mode;
    expect_raised_as<CvtInvalidArgument>(
        [] { codecvt_string_to_ustring("UTF-8", true).change_call_back(static_cast<mode>(2)); }, cvt_invalid_argument,
        "fl:i18n:CvtInvalidArgument");
    expect_raised_as<CvtInvalidEncodingName>([] { codecvt_ustring_to_string("x-no-such-charset", true); },
                                             cvt_invalid_encoding_name, "Invalid encoding name specified.",
                                             "x-no-such-charset");
    // ICU refuses a substitution longer than the encoding's longest character.
    expect_raised_as<CvtCallBackSettingFailure>(
        [] { codecvt_ustring_to_string("ISO-8859-1", true).change_call_back(cvt_call_back_substitute, "ab"); },
        cvt_call_back_setting_failure, "fl:i18n:CvtCallBackSettingFailure");
    expect_raised_as<CvtNonSupportedMode>(
        [] { codecvt_string_to_ustring("UTF-8", true).change_call_back(cvt_call_back_not_implemented); },
        cvt_non_supported_mode, "fl:i18n:CvtNonSupportedMode");
    expect_raised_as<CvtInvalidCharacter>([] { codecvt_string_to_ustring("UTF-8", false).convert("\xFF", 1); },
                                          cvt_invalid_character, "Invalid character code sequence detected.");
    expect_raised_as<CvtSizeTooLarge>(
        [] { codecvt_ustring_to_string("UTF-8", true).change_call_back(cvt_call_back_substitute, std::string(128, 'x')); },
        cvt_size_too_large, "Data size too large for character code conversion.");
    expect_raised_as<CvtConversionFailure>([] { codecvt_string_to_ustring("UTF-8", false).convert("\xE3\x81", 2); },
                                           cvt_conversion_failure, "Failed to convert character code.");
}

TEST(CvtExceptionBase, EncodingNameMayBeEmpty)
{
    EXPECT_EQ(describe(CvtInvalidEncodingName("")), std::to_string(cvt_invalid_encoding_name) +
                                                        " Invalid encoding name specified. name ");
}

}  // namespace
