// Tests of the conversion exceptions raised by real calls: exact type, id, text and encoding name,
// kept by a sliced copy and by transport across threads with boost::exception_ptr.
#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/conversion_error.hpp>

#include <boost/exception_ptr.hpp>
#include <gtest/gtest.h>

#include <functional>
#include <thread>
#include <type_traits>

namespace {

using namespace fl::i18n;

static_assert(std::is_abstract_v<CvtExceptionBase>);
static_assert(std::is_base_of_v<std::exception, CvtExceptionBase>);

// The first of the types that the captured exception is, with its id, text and name, read from a
// copy sliced out of Boost's wrapper.
template <class E, class... Others>
std::string rethrown_as(const boost::exception_ptr& captured, const char* const* types)
{
    try {
        boost::rethrow_exception(captured);
    } catch (const E& e) {
        const E copy(e);
        std::string name;
        if constexpr (std::is_same_v<E, CvtInvalidEncodingName>) name = " name " + copy.get_encoding_name();
        return std::string(*types) + " " + std::to_string(copy.get_id()) + " " +
               static_cast<const std::exception&>(copy).what() + name;
    } catch (...) {
    }
    if constexpr (sizeof...(Others) > 0)
        return rethrown_as<Others...>(captured, types + 1);
    return "lost its type";
}

// What a call throws, captured in one thread and rethrown in another; only an exception thrown
// inside Boost's cloning wrapper arrives with its type.
std::string failure_of(const std::function<void()>& call)
{
    boost::exception_ptr captured;
    std::thread([&] {
        try {
            call();
        } catch (...) {
            captured = boost::current_exception();
        }
    }).join();
    static const char* const types[] = {"CvtInvalidArgument", "CvtInvalidEncodingName", "CvtCallBackSettingFailure",
                                        "CvtNonSupportedMode", "CvtInvalidCharacter", "CvtSizeTooLarge",
                                        "CvtConversionFailure"};
    if (!captured) return "nothing";
    return rethrown_as<CvtInvalidArgument, CvtInvalidEncodingName, CvtCallBackSettingFailure, CvtNonSupportedMode,
                       CvtInvalidCharacter, CvtSizeTooLarge, CvtConversionFailure>(captured, types);
}

TEST(CvtExceptionBase, RealFailuresKeepTypeIdTextAndNameAcrossThreads)
{
    using mode = codecvt_call_back_mode;
    const std::pair<std::function<void()>, std::string> cases[] = {
        {[] { codecvt_string_to_ustring("UTF-8", true).change_call_back(static_cast<mode>(2)); },
         "CvtInvalidArgument 1 fl:i18n:CvtInvalidArgument"},
        {[] { codecvt_ustring_to_string("x-no-such-charset", true); },
         "CvtInvalidEncodingName 2 Invalid encoding name specified. name x-no-such-charset"},
        // ICU refuses a substitution longer than the encoding's longest character.
        {[] { codecvt_ustring_to_string("ISO-8859-1", true).change_call_back(cvt_call_back_substitute, "ab"); },
         "CvtCallBackSettingFailure 3 fl:i18n:CvtCallBackSettingFailure"},
        {[] { codecvt_string_to_ustring("UTF-8", true).change_call_back(cvt_call_back_not_implemented); },
         "CvtNonSupportedMode 4 fl:i18n:CvtNonSupportedMode"},
        {[] { codecvt_string_to_ustring("UTF-8", false).convert("\xFF", 1); },
         "CvtInvalidCharacter 5 Invalid character code sequence detected."},
        {[] {
             codecvt_ustring_to_string("UTF-8", true).change_call_back(cvt_call_back_substitute, std::string(128, 'x'));
         },
         "CvtSizeTooLarge 6 Data size too large for character code conversion."},
        {[] { codecvt_string_to_ustring("UTF-8", false).convert("\xE3\x81", 2); },
         "CvtConversionFailure 7 Failed to convert character code."},
    };
    for (const auto& [call, expected] : cases) EXPECT_EQ(failure_of(call), expected);
}

}  // namespace
