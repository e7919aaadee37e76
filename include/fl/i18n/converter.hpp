// The two abstract converter interfaces: whole-text `converter` and streaming `stream_converter`.
#pragma once

#include <fl/i18n/export.hpp>
#include <fl/i18n/ustring.hpp>

#include <boost/noncopyable.hpp>

#include <string>

namespace fl::i18n {

/// Converts a whole text of `From` units into `To` units. Instantiated for
/// <char16_t, char>, <char, char16_t>, <char16_t, wchar_t> and <wchar_t, char16_t>.
/// Operations are const but an ICU-backed converter moves its internal state on each call:
/// use one object from one thread at a time.
template <class To, class From>
class QXI18N_API converter : private boost::noncopyable {
public:
    using to_type = To;
    using from_type = From;
    using result_type = std::basic_string<To>;

    virtual ~converter() = default;

    /// Number of `To` units that converting `source_length` units of `source` produces.
    unsigned long get_destination_size(const From* source, unsigned long source_length) const
    {
        return do_get_destination_size(source, source_length);
    }

    /// Converts all of the source into a new string.
    result_type convert(const From* source, unsigned long source_length) const
    {
        return do_convert(source, source_length);
    }

    /// Writes at most `destination_capacity` units, adds no terminator, and returns the number of
    /// units the whole source needs (which may exceed the capacity).
    unsigned long convert(To* destination, unsigned long destination_capacity, const From* source,
                          unsigned long source_length) const
    {
        return do_convert(destination, destination_capacity, source, source_length);
    }

protected:
    converter() = default;

    virtual unsigned long do_get_destination_size(const From* source,
                                                  unsigned long source_length) const = 0;
    virtual result_type do_convert(const From* source, unsigned long source_length) const = 0;
    virtual unsigned long do_convert(To* destination, unsigned long destination_capacity,
                                     const From* source, unsigned long source_length) const = 0;
};

/// Converts a text fed in pieces, keeping partial characters between calls, in the manner of
/// std::codecvt::in/out. Instantiated for <char16_t, char>, <char, char16_t> and <char, char>.
template <class To, class From>
class QXI18N_API stream_converter : private boost::noncopyable {
public:
    virtual ~stream_converter() = default;

    /// Converts from `*source` up to `source_end` into `*destination` up to `destination_end`,
    /// moving both pointers as far as the work got. Returns true when the destination is full
    /// and more output is waiting, false when nothing more can be done with this input.
    /// A stream that ends calls this with `flush` true until it returns false.
    bool convert(To** destination, To* destination_end, const From** source,
                 const From* source_end, bool flush) const
    {
        return do_convert(destination, destination_end, source, source_end, flush);
    }

    /// Forgets any partial character held from earlier calls.
    void reset_state() const { do_reset_state(); }

    /// The largest number of `To` units one character needs.
    int max_char_size() const { return do_max_char_size(); }

protected:
    stream_converter() = default;

    virtual bool do_convert(To** destination, To* destination_end, const From** source,
                            const From* source_end, bool flush) const = 0;
    virtual void do_reset_state() const = 0;
    virtual int do_max_char_size() const = 0;
};

}  // namespace fl::i18n
