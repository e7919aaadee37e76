// The name rules of a volume: path comparison, name validation, the volume's handling mask,
// and setting a file's modification time.
#pragma once

#include <fl/filesystem/foundation/upath.hpp>
#include <fl/i18n/character_handling.hpp>
#include <fl/i18n/export.hpp>
#include <fl/i18n/ustring.hpp>

#include <boost/date_time/posix_time/posix_time_types.hpp>

namespace fl::filesystem {

/// The checks of validate_pathname, combined with "|"; the result names the first that failed.
enum validation_id : unsigned {
    /// A character the file-system encoding cannot hold. Always checked.
    validate_encodable = 1,
    /// A NUL unit anywhere in the name.
    validate_no_null = 4,
    /// The whole name, in file-system bytes, below PATH_MAX (4096).
    validate_path_length = 16,
    /// Each "/"-separated component, in file-system bytes, below NAME_MAX + 1 (256).
    validate_component_length = 32,
};

inline constexpr validation_id operator|(validation_id a, validation_id b) noexcept
{
    return static_cast<validation_id>(static_cast<unsigned>(a) | static_cast<unsigned>(b));
}

/// Orders two absolute paths after putting them in native form, unit by unit: -1 or 1 at the
/// first difference, else the difference of the lengths (callers test the sign). An empty path
/// orders first; a non-empty relative path throws InvalidArgument "Path must be absolute".
QXI18N_API int compare(const ustring& a, const ustring& b);
QXI18N_API int compare(const upath& a, const upath& b);
/// Literals compare as ustring (upath converts from them too).
inline int compare(const char16_t* a, const char16_t* b) { return compare(ustring(a), ustring(b)); }

/// Orders two names by the case and normalisation rules of `mode` (the locale bit is ignored
/// where another bit applies). An empty name orders first, whatever the mode. A mode that is
/// locale_mode alone, or normalisation-insensitive with a normalising bit, throws
/// InvalidArgument; ICU failures throw PathNameComparisonFailure, names of 2^31 units or more
/// FileNameTooLarge (empty path).
QXI18N_API int compare(const ustring& a, const ustring& b, const fl::i18n::character_handling_mode_context& mode);
QXI18N_API int compare(const upath& a, const upath& b, const fl::i18n::character_handling_mode_context& mode);
inline int compare(const char16_t* a, const char16_t* b, const fl::i18n::character_handling_mode_context& mode)
{
    return compare(ustring(a), ustring(b), mode);
}

/// The rules of the volume holding `path`: default_mode on this platform, where names are
/// case-sensitive and not normalised. No disk access; throws InvalidArgument for the empty path
/// and the conversion exceptions for a path the file-system encoding cannot hold.
QXI18N_API fl::i18n::character_handling_mode_context generate_character_handling_mask_from_volume(const upath& path);

/// `path` resolved against `volume_path` (links, "." and ".." resolved), in native form. The
/// empty path gives the empty path; a missing one throws as canonical does.
QXI18N_API upath get_pathname_from_volume(const upath& volume_path, const upath& path);
QXI18N_API ustring get_pathname_from_volume(const ustring& volume_path, const ustring& path);

/// The first of `checks` that `name` fails, in the order 4, 1, 16, 32 (validate_encodable is
/// always checked), or 0. Lengths count bytes of the file-system encoding. The empty name
/// passes. `mode` is not used on this platform. Conversion failures other than a character the
/// encoding lacks pass through.
QXI18N_API unsigned validate_pathname(const ustring& name, validation_id checks,
                                      const fl::i18n::character_handling_mode_context& mode);

/// Sets the modification time of `path`. Throws InvalidArgument for an empty path or a time
/// that is not a date, and the exceptions of throw_file_system_error for system failures.
QXI18N_API void last_write_time(const upath& path, const boost::posix_time::ptime& time);
QXI18N_API void last_write_time(const ustring& path, const boost::posix_time::ptime& time);

}  // namespace fl::filesystem
