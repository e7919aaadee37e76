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

// What `call` throws, captured in one thread and rethrown in another as E: id, text and (for a bad
// name) the name, read from a copy sliced out of Boost's wrapper. Only an exception thrown inside
// that cloning wrapper arrives with its type.
template <class E>
std::string arrives_as(const std::function<void()>& call)
{
    boost::exception_ptr captured;
    std::thread([&] {
        try {
            call();
        } catch (...) {
            captured = boost::current_exception();
        }
    }).join();
    if (!captured) return "nothing";
    try {
        boost::rethrow_exception(captured);
    } catch (const E& e) {
        const E copy(e);
        std::string text = std::to_string(copy.get_id()) + " " + static_cast<const std::exception&>(copy).what();
        if constexpr (std::is_same_v<E, CvtInvalidEncodingName>) text += " name " + copy.get_encoding_name();
        return text;
    } catch (...) {
    }
    return "lost its type";
}

TEST(CvtExceptionBase, RealFailuresKeepTypeIdTextAndNameAcrossThreads)
{
    using in = codecvt_string_to_ustring;
    using out = codecvt_ustring_to_string;
    const std::pair<std::string, std::string> cases[] = {
        {arrives_as<CvtInvalidArgument>([] { in("UTF-8", true).change_call_back(codecvt_call_back_mode(2)); }),
         "1 fl:i18n:CvtInvalidArgument"},
        {arrives_as<CvtInvalidEncodingName>([] { out("x-no-such-charset", true); }),
         "2 Invalid encoding name specified. name x-no-such-charset"},
        // ICU refuses a substitution longer than the encoding's longest character.
        {arrives_as<CvtCallBackSettingFailure>(
             [] { out("ISO-8859-1", true).change_call_back(cvt_call_back_substitute, "ab"); }),
         "3 fl:i18n:CvtCallBackSettingFailure"},
        {arrives_as<CvtNonSupportedMode>([] { in("UTF-8", true).change_call_back(cvt_call_back_not_implemented); }),
         "4 fl:i18n:CvtNonSupportedMode"},
        {arrives_as<CvtInvalidCharacter>([] { in("UTF-8", false).convert("\xFF", 1); }),
         "5 Invalid character code sequence detected."},
        {arrives_as<CvtSizeTooLarge>(
             [] { out("UTF-8", true).change_call_back(cvt_call_back_substitute, std::string(128, 'x')); }),
         "6 Data size too large for character code conversion."},
        {arrives_as<CvtConversionFailure>([] { in("UTF-8", false).convert("\xE3\x81", 2); }),
         "7 Failed to convert character code."},
    };
    for (const auto& [actual, expected] : cases) EXPECT_EQ(actual, expected);
}

}  // namespace
