// The two ICU-backed whole-text converters between ustring and a named encoding, and the opening
// of the converter state they share with the streaming converters.
#include "conversion_internal.hpp"
#include "converter_state.hpp"

#include <fl/i18n/codecvt.hpp>
#include <fl/i18n/locale.hpp>

namespace fl::i18n {

namespace detail {

namespace {

// An empty name means the encoding of the global locale at construction; an alias is left to ICU.
std::string resolve_encoding(const std::string& encoding)
{
    return encoding.empty() ? QxLocale::global().getEncoding() : encoding;
}

}  // namespace

std::unique_ptr<converter_state> open_to_unicode_state(const std::string& encoding, std::uint32_t mode)
{
    auto state = std::make_unique<converter_state>(resolve_encoding(encoding));
    if (mode != cvt_call_back_default)
        state->change_to_unicode_call_back(mode);
    return state;
}

std::unique_ptr<converter_state> open_from_unicode_state(const std::string& encoding, std::uint32_t mode,
                                                         const std::string& substitution)
{
    auto state = std::make_unique<converter_state>(resolve_encoding(encoding));
    if (mode != cvt_call_back_default)
        state->change_from_unicode_call_back(mode, substitution);
    return state;
}

}  // namespace detail

namespace {

detail::converter_state& require_state(const std::unique_ptr<detail::converter_state>& state)
{
    if (!state)
        fl::detail::throw_exception(CvtConversionFailure());
    return *state;
}

}  // namespace

// --- codecvt_string_to_ustring ---

codecvt_string_to_ustring::codecvt_string_to_ustring(const std::string& encoding, bool substitute)
    : state_(detail::open_to_unicode_state(encoding, substitute ? cvt_call_back_default : cvt_call_back_stop))
{
}

codecvt_string_to_ustring::codecvt_string_to_ustring(codecvt_call_back_mode mode, const std::string& encoding)
    : state_(detail::open_to_unicode_state(encoding, mode))
{
}

codecvt_string_to_ustring::codecvt_string_to_ustring(codecvt_string_to_ustring&& other) noexcept : state_(std::move(other.state_)) {}

codecvt_string_to_ustring& codecvt_string_to_ustring::operator=(codecvt_string_to_ustring&& other) noexcept
{
    state_ = std::move(other.state_);
    return *this;
}

codecvt_string_to_ustring::~codecvt_string_to_ustring() = default;

void codecvt_string_to_ustring::change_call_back(codecvt_call_back_mode mode)
{
    if (state_)
        state_->change_to_unicode_call_back(mode);
}

void codecvt_string_to_ustring::reset_call_back()
{
    if (state_)
        state_->reset_to_unicode_call_back();
}

codecvt_call_back_mode codecvt_string_to_ustring::get_call_back_mode() const
{
    return static_cast<codecvt_call_back_mode>(state_ ? state_->to_unicode_mode() : 0);
}

unsigned long codecvt_string_to_ustring::do_get_destination_size(const char* source,
                                                                 unsigned long source_length) const
{
    return detail::chunked_to_unicode(require_state(state_).get(), nullptr, 0, source, source_length);
}

ustring codecvt_string_to_ustring::do_convert(const char* source, unsigned long source_length) const
{
    UConverter* icu = require_state(state_).get();
    return detail::convert_with_two_buffers<char16_t>(source_length, [&](char16_t* buffer, unsigned long capacity) {
        return detail::chunked_to_unicode(icu, buffer, capacity, source, source_length);
    });
}

unsigned long codecvt_string_to_ustring::do_convert(char16_t* destination, unsigned long destination_capacity,
                                                    const char* source, unsigned long source_length) const
{
    return detail::chunked_to_unicode(require_state(state_).get(), destination, destination_capacity, source,
                                      source_length);
}

// --- codecvt_ustring_to_string ---

codecvt_ustring_to_string::codecvt_ustring_to_string(const std::string& encoding, bool substitute)
    : state_(detail::open_from_unicode_state(encoding, substitute ? cvt_call_back_default : cvt_call_back_stop,
                                             std::string()))
{
}

codecvt_ustring_to_string::codecvt_ustring_to_string(codecvt_call_back_mode mode, const std::string& encoding,
                                                     const std::string& substitution)
    : state_(detail::open_from_unicode_state(encoding, mode, substitution))
{
}

codecvt_ustring_to_string::codecvt_ustring_to_string(codecvt_ustring_to_string&& other) noexcept : state_(std::move(other.state_)) {}

codecvt_ustring_to_string& codecvt_ustring_to_string::operator=(codecvt_ustring_to_string&& other) noexcept
{
    state_ = std::move(other.state_);
    return *this;
}

codecvt_ustring_to_string::~codecvt_ustring_to_string() = default;

void codecvt_ustring_to_string::change_call_back(codecvt_call_back_mode mode, const std::string& substitution)
{
    if (state_)
        state_->change_from_unicode_call_back(mode, substitution);
}

void codecvt_ustring_to_string::reset_call_back()
{
    if (state_)
        state_->reset_from_unicode_call_back();
}

codecvt_call_back_mode codecvt_ustring_to_string::get_call_back_mode() const
{
    return static_cast<codecvt_call_back_mode>(state_ ? state_->from_unicode_mode() : 0);
}

unsigned long codecvt_ustring_to_string::do_get_destination_size(const char16_t* source,
                                                                 unsigned long source_length) const
{
    return detail::chunked_from_unicode(require_state(state_).get(), nullptr, 0, source, source_length);
}

std::string codecvt_ustring_to_string::do_convert(const char16_t* source, unsigned long source_length) const
{
    UConverter* icu = require_state(state_).get();
    return detail::convert_with_two_buffers<char>(source_length, [&](char* buffer, unsigned long capacity) {
        return detail::chunked_from_unicode(icu, buffer, capacity, source, source_length);
    });
}

unsigned long codecvt_ustring_to_string::do_convert(char* destination, unsigned long destination_capacity,
                                                    const char16_t* source, unsigned long source_length) const
{
    return detail::chunked_from_unicode(require_state(state_).get(), destination, destination_capacity, source,
                                        source_length);
}

}  // namespace fl::i18n
