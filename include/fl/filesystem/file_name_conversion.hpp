// Conversion between UTF-16 file names and the bytes of the file system, in the process's
// default encoding; upath's append.
#pragma once

#include <fl/filesystem/foundation/upath.hpp>
#include <fl/i18n/converter.hpp>
#include <fl/i18n/export.hpp>
#include <fl/i18n/ustring.hpp>

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <boost/filesystem/path.hpp>

#include <memory>
#include <string>

namespace fl::i18n::detail {
class converter_state;
}

namespace fl::filesystem {

namespace detail {

/// What the four file-name converters share: they work in the encoding of the global locale at
/// construction. Strict (`substitute` false): a character that does not convert throws
/// CvtInvalidCharacter of fl::filesystem. Lenient (true): ICU's substitution character takes its
/// place. Lengths of 2^31 units or more throw FileNameTooLarge (empty path); other ICU failures
/// FileNameConversionFailure. The buffer form of convert() returns the full length needed and
/// writes at most the capacity. One object is for one thread at a time. Construction throws
/// fl::i18n::CvtConversionFailure when no converter can be made.
template <class To, class From>
class QXI18N_API file_name_converter : public fl::i18n::converter<To, From> {
public:
    explicit file_name_converter(bool substitute);
    ~file_name_converter() override;

protected:
    unsigned long do_get_destination_size(const From* source, unsigned long source_length) const override;
    std::basic_string<To> do_convert(const From* source, unsigned long source_length) const override;
    unsigned long do_convert(To* destination, unsigned long destination_capacity, const From* source,
                             unsigned long source_length) const override;

private:
    std::unique_ptr<fl::i18n::detail::converter_state> state_;
};

}  // namespace detail

/// File-system bytes to UTF-16.
class QXI18N_API codecvt_filesystem_to_ustring : public detail::file_name_converter<char16_t, char> {
public:
    explicit codecvt_filesystem_to_ustring(bool substitute);
    ~codecvt_filesystem_to_ustring() override;
};

/// UTF-16 to file-system bytes.
class QXI18N_API codecvt_ustring_to_filesystem : public detail::file_name_converter<char, char16_t> {
public:
    explicit codecvt_ustring_to_filesystem(bool substitute);
    ~codecvt_ustring_to_filesystem() override;
};

/// Narrow text in the default encoding to UTF-16: codecvt_filesystem_to_ustring under the name
/// for call sites that convert other text than file names.
class QXI18N_API codecvt_narrow_string_to_ustring : public detail::file_name_converter<char16_t, char> {
public:
    explicit codecvt_narrow_string_to_ustring(bool substitute);
    ~codecvt_narrow_string_to_ustring() override;
};

/// UTF-16 to narrow text in the default encoding: codecvt_ustring_to_filesystem under another name.
class QXI18N_API codecvt_ustring_to_narrow_string : public detail::file_name_converter<char, char16_t> {
public:
    explicit codecvt_ustring_to_narrow_string(bool substitute);
    ~codecvt_ustring_to_narrow_string() override;
};

/// The native bytes of `path` in UTF-16, converted with the calling thread's converter for the
/// default encoding. Throws as a converter with that thread's call-back mode does (lenient by
/// default) and FileNameTooLarge for 2^31 bytes or more.
QXI18N_API ustring to_ustring(const boost::filesystem::path& path);

/// As to_ustring, of the path's generic form ("/" separators).
QXI18N_API ustring to_generic_ustring(const boost::filesystem::path& path);

/// As to_generic_ustring, with the caller's converter (called through its string form).
/// An empty path gives an empty result without calling `converter`.
QXI18N_API ustring to_generic_ustring(const boost::filesystem::path& path,
                                      const fl::i18n::converter<char16_t, char>& converter);

/// Sets the modification time of the file at `native_path` (file-system bytes) to `time`, with
/// microsecond resolution. A system failure throws as throw_file_system_error(error, "",
/// native_path) does.
QXI18N_API void set_last_write_time(const std::string& native_path, const boost::posix_time::ptime& time);

namespace detail {

/// detail::make_native_access_form of libqxfoundation_filesystem, exported from libqxi18n.
QXI18N_API std::string make_native_access_form_i18n(const ustring& path);
/// detail::make_native_access_form_with_cleanup of libqxfoundation_filesystem, exported here.
QXI18N_API std::string make_native_access_form_with_cleanup_i18n(const ustring& path);

}  // namespace detail
}  // namespace fl::filesystem
