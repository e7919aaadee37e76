// The streaming converters: ICU's state is kept between calls, so input may end inside a character.
#include "conversion_internal.hpp"
#include "converter_state.hpp"

#include <fl/i18n/stream_codecvt.hpp>

namespace fl::i18n {

namespace {

constexpr std::size_t pivot_units = 4096;

// The outcome of one ICU step: true while output waits for room. A failure leaves no partial
// character behind, so the object can start a new stream after the throw.
template <class To, class From>
bool step_result(UErrorCode status, const stream_converter<To, From>& converter)
{
    if (status == U_BUFFER_OVERFLOW_ERROR)
        return true;
    if (U_FAILURE(status)) {
        converter.reset_state();
        detail::throw_icu_conversion_error(status);
    }
    return false;
}

// One call of ucnv_toUnicode or ucnv_fromUnicode with the caller's pointers and flush flag.
template <class To, class From, class Call>
bool icu_step(Call call, UConverter* converter, To** destination, To* destination_end, const From** source,
              const From* source_end, bool flush, const stream_converter<To, From>& self)
{
    UErrorCode status = U_ZERO_ERROR;
    call(converter, destination, destination_end, source, source_end, nullptr, flush, &status);
    return step_result(status, self);
}

std::uint32_t strict_or_default(bool substitute)
{
    return substitute ? cvt_call_back_default : cvt_call_back_stop;
}

}  // namespace

// --- stream_codecvt_string_to_ustring ---

stream_codecvt_string_to_ustring::stream_codecvt_string_to_ustring(const std::string& encoding, bool substitute)
    : state_(detail::open_to_unicode_state(encoding, strict_or_default(substitute)))
{
}

stream_codecvt_string_to_ustring::~stream_codecvt_string_to_ustring() = default;

bool stream_codecvt_string_to_ustring::do_convert(char16_t** destination, char16_t* destination_end,
                                                  const char** source, const char* source_end, bool flush) const
{
    return icu_step(ucnv_toUnicode, state_->get(), destination, destination_end, source, source_end, flush, *this);
}

void stream_codecvt_string_to_ustring::do_reset_state() const
{
    ucnv_resetToUnicode(state_->get());
}

int stream_codecvt_string_to_ustring::do_max_char_size() const
{
    return 2;
}

// --- stream_codecvt_ustring_to_string ---

stream_codecvt_ustring_to_string::stream_codecvt_ustring_to_string(const std::string& encoding, bool substitute)
    : state_(detail::open_from_unicode_state(encoding, strict_or_default(substitute), std::string()))
{
}

stream_codecvt_ustring_to_string::stream_codecvt_ustring_to_string(codecvt_call_back_mode mode,
                                                                   const std::string& encoding,
                                                                   const std::string& substitution)
    : state_(detail::open_from_unicode_state(encoding, mode, substitution))
{
}

stream_codecvt_ustring_to_string::~stream_codecvt_ustring_to_string() = default;

bool stream_codecvt_ustring_to_string::do_convert(char** destination, char* destination_end,
                                                  const char16_t** source, const char16_t* source_end,
                                                  bool flush) const
{
    return icu_step(ucnv_fromUnicode, state_->get(), destination, destination_end, source, source_end, flush,
                    *this);
}

void stream_codecvt_ustring_to_string::do_reset_state() const
{
    ucnv_resetFromUnicode(state_->get());
}

int stream_codecvt_ustring_to_string::do_max_char_size() const
{
    return state_->max_char_size();
}

// --- detail::stream_codecvt_multi_streaming_converter ---

namespace detail {

// UTF-16 between the two ICU converters; ucnv_convertEx moves the pointers.
struct stream_codecvt_multi_streaming_converter::pivot_block {
    char16_t units[pivot_units];
    char16_t* pivot_start;
    char16_t* pivot_limit;
    char16_t* pivot_source;
    char16_t* pivot_target;
};

namespace {

// The named encoding is the target of type 0 and the source of every other type.
const std::string& target_name(const std::string& named, MultiStreamConvType type)
{
    static const std::string utf8 = "UTF-8";
    return type == utf8_to_named_encoding ? named : utf8;
}

const std::string& source_name(const std::string& named, MultiStreamConvType type)
{
    static const std::string utf8 = "UTF-8";
    return type == utf8_to_named_encoding ? utf8 : named;
}

// Strict conversions stop on both sides; lenient ones into the named encoding escape what it
// lacks as "&#xHHHH;" instead of writing its substitution character.
std::uint32_t target_mode(MultiStreamConvType type, bool substitute)
{
    if (!substitute)
        return cvt_call_back_stop;
    return type == utf8_to_named_encoding ? cvt_call_back_escape_xml_hex : cvt_call_back_default;
}

// ucnv_convertEx refuses null pointers even around an empty range, which std::codecvt callers
// may pass; such a range is handed to ICU as an empty range at a real address.
template <class Char>
struct empty_range_guard {
    Char** pointer;
    Char* saved;
    Char empty_slot[1] = {};  // a real address for an empty range

    empty_range_guard(Char** p, Char*& end) : pointer(p), saved(*p)
    {
        if (saved == nullptr && end == nullptr) {
            *pointer = empty_slot;
            end = empty_slot;
        }
    }
    ~empty_range_guard()
    {
        if (saved == nullptr)
            *pointer = nullptr;
    }
};

}  // namespace

stream_codecvt_multi_streaming_converter::stream_codecvt_multi_streaming_converter(const std::string& encoding,
                                                                                   MultiStreamConvType type,
                                                                                   bool substitute)
    : target_(open_from_unicode_state(target_name(encoding, type), target_mode(type, substitute), std::string())),
      source_(open_to_unicode_state(source_name(encoding, type), strict_or_default(substitute))),
      pivot_(std::make_unique<pivot_block>()),
      type_(type)
{
    pivot_->pivot_start = pivot_->units;
    pivot_->pivot_limit = pivot_->units + pivot_units;
    pivot_->pivot_source = pivot_->units;
    pivot_->pivot_target = pivot_->units;
}

stream_codecvt_multi_streaming_converter::~stream_codecvt_multi_streaming_converter() = default;

bool stream_codecvt_multi_streaming_converter::do_convert(char** destination, char* destination_end,
                                                          const char** source, const char* source_end,
                                                          bool flush) const
{
    const empty_range_guard<char> out(destination, destination_end);
    const empty_range_guard<const char> in(source, source_end);
    UErrorCode status = U_ZERO_ERROR;
    ucnv_convertEx(target_->get(), source_->get(), destination, destination_end, source, source_end,
                   pivot_->pivot_start, &pivot_->pivot_source, &pivot_->pivot_target, pivot_->pivot_limit,
                   false, flush, &status);
    return step_result(status, *this);
}

void stream_codecvt_multi_streaming_converter::do_reset_state() const
{
    ucnv_resetToUnicode(source_->get());
    ucnv_resetFromUnicode(target_->get());
    pivot_->pivot_source = pivot_->pivot_start;
    pivot_->pivot_target = pivot_->pivot_start;
}

int stream_codecvt_multi_streaming_converter::do_max_char_size() const
{
    switch (type_) {
    case utf8_to_named_encoding: return target_->max_char_size();
    case named_encoding_to_utf8: return source_->max_char_size();
    default: return 0;
    }
}

}  // namespace detail

// --- the two public multi-streaming converters ---

stream_codecvt_utf8string_to_string::stream_codecvt_utf8string_to_string(const std::string& encoding,
                                                                         bool substitute)
    : stream_codecvt_multi_streaming_converter(encoding, detail::utf8_to_named_encoding, substitute)
{
}

stream_codecvt_string_to_utf8string::stream_codecvt_string_to_utf8string(const std::string& encoding,
                                                                         bool substitute)
    : stream_codecvt_multi_streaming_converter(encoding, detail::named_encoding_to_utf8, substitute)
{
}

}  // namespace fl::i18n
