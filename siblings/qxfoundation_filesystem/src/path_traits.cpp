// The narrow path operations: each byte carried as one UTF-16 unit through the UTF-16 ones.
#include <fl/filesystem/foundation/pathname.hpp>

namespace fl::filesystem::detail {
namespace {

// One unit per byte, so the separators and dots the UTF-16 operations look for stay in place
// and every other byte comes back unchanged.
ustring widen(const std::string& bytes)
{
    ustring units(bytes.size(), u'\0');
    for (std::size_t i = 0; i < bytes.size(); ++i)
        units[i] = static_cast<char16_t>(static_cast<unsigned char>(bytes[i]));
    return units;
}

std::string narrow(const ustring& units)
{
    std::string bytes(units.size(), '\0');
    for (std::size_t i = 0; i < units.size(); ++i)
        bytes[i] = static_cast<char>(static_cast<unsigned char>(units[i]));
    return bytes;
}

}  // namespace

std::string path_traits<char, char>::make_native_form(const std::string& path, bool remove_current_directory)
{
    return narrow(detail::make_native_form(widen(path), remove_current_directory));
}

std::string path_traits<char, char>::concatenate_pathname(const std::string& head, const std::string& tail)
{
    return narrow(detail::concatenate_pathname(widen(head), widen(tail)));
}

}  // namespace fl::filesystem::detail
