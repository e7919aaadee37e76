// Path comparison by the rules of a handling mask, name validation, and the volume queries.
#include "filesystem_internal.hpp"

#include "common/throw_exception.hpp"

#include <fl/filesystem/file_name_conversion.hpp>
#include <fl/filesystem/filesystem_error.hpp>
#include <fl/filesystem/foundation/file_status.hpp>
#include <fl/filesystem/foundation/pathname.hpp>
#include <fl/filesystem/path_rules.hpp>

#include <unicode/unorm.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <climits>

namespace fl::filesystem {

namespace {

using fl::i18n::character_handling_mode_context;

constexpr unsigned long icu_length_limit = 0x80000000UL;
constexpr std::size_t path_max = 4096;
constexpr std::size_t name_max_plus_one = 256;

int binary_compare(const ustring& a, const ustring& b)
{
    const std::size_t common = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < common; ++i)
        if (a[i] != b[i])
            return a[i] < b[i] ? -1 : 1;
    const long long difference = static_cast<long long>(a.size()) - static_cast<long long>(b.size());
    return static_cast<int>(std::clamp<long long>(difference, INT_MIN, INT_MAX));
}

[[noreturn]] void throw_invalid_argument(const char* message, const ustring& path)
{
    fl::detail::throw_exception(InvalidArgument(message, path, {}));
}

int compare_absolute_paths(const ustring& a, const ustring& b)
{
    if (a.empty() && b.empty())
        return 0;
    if (!a.empty() && !detail::is_absolute(a))
        throw_invalid_argument("Path must be absolute", a);
    if (b.empty())
        return 1;
    if (a.empty() && detail::is_absolute(b))
        return -1;
    if (!detail::is_absolute(b))
        throw_invalid_argument("Path must be absolute", b);
    return binary_compare(a, b);
}

// Short ASCII needs no normaliser. Only the shorter string is inspected.
bool fast_path_applies(const ustring& a, const ustring& b)
{
    const ustring& shorter = a.size() <= b.size() ? a : b;
    return shorter.size() <= 19 && std::all_of(shorter.begin(), shorter.end(), [](char16_t u) { return u < 128; });
}

int icu_compare(const ustring& a, const ustring& b, unsigned selector)
{
    if (b.size() >= icu_length_limit || a.size() >= icu_length_limit)
        fl::detail::throw_exception(FileNameTooLarge(ustring()));
    const auto a_length = static_cast<int32_t>(a.size());
    const auto b_length = static_cast<int32_t>(b.size());
    UErrorCode status = U_ZERO_ERROR;
    int result = 0;
    if (selector == 1)
        result = u_strCaseCompare(a.data(), a_length, b.data(), b_length, 0, &status);
    else
        result = unorm_compare(a.data(), a_length, b.data(), b_length, selector == 2 || selector == 16 ? 0 : U_COMPARE_IGNORE_CASE,
                               &status);
    if (U_FAILURE(status))
        fl::detail::throw_exception(PathNameComparisonFailure());
    return result;
}

int compare_by_selector(const ustring& a, const ustring& b, unsigned selector)
{
    switch (selector) {
    case 0:
        return binary_compare(a, b);
    case 2:
    case 16:
        if (fast_path_applies(a, b))
            return binary_compare(a, b);
        return icu_compare(a, b, selector);
    case 1:
    case 3:
    case 17:
        return icu_compare(a, b, selector);
    default:
        throw_invalid_argument("Invalid mask specified", ustring());
    }
}

int compare_by_mode(const ustring& a, const ustring& b, const character_handling_mode_context& mode)
{
    if (a.empty())
        return b.empty() ? 0 : -1;
    if (b.empty())
        return 1;
    const unsigned mask = mode.get_mask();
    const unsigned ci = mask & character_handling_mode_context::case_insensitive_mode;
    const unsigned norm = mask & character_handling_mode_context::normalized_decompose_mode;
    if ((mask & character_handling_mode_context::normalization_insensitive_mode) != 0) {
        const unsigned selector = ci != 0 ? 17U : 16U;
        return compare_by_selector(a, b, norm == 0 ? selector : selector | 2U);
    }
    if (norm == 0) {
        if (ci == 0 && mask != character_handling_mode_context::default_mode)
            throw_invalid_argument("Specified character handling mask not valid", ustring());
        return compare_by_selector(a, b, ci != 0 ? 1U : 0U);
    }
    return compare_by_selector(a, b, ci != 0 ? 3U : 2U);
}

}  // namespace

int compare(const ustring& a, const ustring& b)
{
    return compare_absolute_paths(detail::path_traits<char16_t, char16_t>::make_native_form(a, true),
                                  detail::path_traits<char16_t, char16_t>::make_native_form(b, true));
}

int compare(const upath& a, const upath& b) { return compare_absolute_paths(a.string(), b.string()); }

int compare(const ustring& a, const ustring& b, const character_handling_mode_context& mode)
{
    return compare_by_mode(a, b, mode);
}

int compare(const upath& a, const upath& b, const character_handling_mode_context& mode)
{
    return compare_by_mode(a.string(), b.string(), mode);
}

character_handling_mode_context generate_character_handling_mask_from_volume(const upath& path)
{
    if (path.empty())
        throw_invalid_argument("Empty Path not permitted", ustring());
    // Only the conversion's failures matter: a name the volume cannot hold is refused here.
    static_cast<void>(detail::to_filesystem_bytes(path.string()));
    return character_handling_mode_context(character_handling_mode_context::default_mode);
}

ustring get_pathname_from_volume(const ustring& volume_path, const ustring& path)
{
    if (path.empty())
        return ustring();
    return detail::make_native_form(canonical(detail::make_native_form(path, true), detail::make_native_form(volume_path, true)),
                                    true);
}

upath get_pathname_from_volume(const upath& volume_path, const upath& path)
{
    if (path.empty())
        return upath();
    return upath(detail::make_native_form(canonical(path.string(), volume_path.string()), true));
}

unsigned validate_pathname(const ustring& name, validation_id checks, const character_handling_mode_context&)
{
    if (name.empty())
        return 0;
    if ((checks & validate_no_null) != 0 && name.find(u'\0') != ustring::npos)
        return validate_no_null;
    try {
        const codecvt_ustring_to_filesystem strict(false);
        static_cast<void>(strict.convert(name.data(), name.size()));
    } catch (const CvtInvalidCharacter&) {
        return validate_encodable;
    }
    if ((checks & (validate_path_length | validate_component_length)) == 0)
        return 0;
    const std::string bytes = detail::to_filesystem_bytes(name);
    if ((checks & validate_path_length) != 0 && bytes.size() >= path_max)
        return validate_path_length;
    if ((checks & validate_component_length) != 0) {
        std::size_t start = 0;
        for (;;) {
            const std::size_t end = std::min(bytes.find('/', start), bytes.size());
            if (end - start >= name_max_plus_one)
                return validate_component_length;
            if (end == bytes.size())
                break;
            start = end + 1;
        }
    }
    return 0;
}

void last_write_time(const ustring& path, const boost::posix_time::ptime& time)
{
    if (path.empty())
        throw_invalid_argument("Empty Path not permitted", ustring());
    if (time.is_not_a_date_time())
        throw_invalid_argument("Time is not a ptime", path);
    set_last_write_time(detail::make_native_access_form(path), time);
}

void last_write_time(const upath& path, const boost::posix_time::ptime& time) { last_write_time(path.string(), time); }

}  // namespace fl::filesystem
