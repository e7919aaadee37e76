// Joining, splitting and normalising UTF-16 path names as plain strings.
#include <fl/filesystem/foundation/pathname.hpp>

namespace fl::filesystem::detail {

namespace {

constexpr char16_t separator = u'/';

bool is_dot_component(const ustring& path, std::size_t begin, std::size_t end)
{
    return end - begin == 1 && path[begin] == u'.';
}

}  // namespace

ustring concatenate_pathname(const ustring& head, const ustring& tail)
{
    if (head.empty())
        return tail;
    if (tail.empty())
        return head;
    const std::size_t head_end = head.find_last_not_of(separator);
    const std::size_t tail_begin = tail.find_first_not_of(separator);
    ustring result;
    if (head_end != ustring::npos)
        result.assign(head, 0, head_end + 1);
    result += separator;
    if (tail_begin != ustring::npos)
        result.append(tail, tail_begin, ustring::npos);
    return result;
}

ustring concatenate_pathname(const ustring& head, const ustring& tail, bool native)
{
    ustring joined = concatenate_pathname(head, tail);
    return native ? make_native_form(joined, true) : joined;
}

ustring extract_parent_path(const ustring& path)
{
    const std::size_t end = path.find_last_not_of(separator);
    if (end == ustring::npos)
        return {};
    const std::size_t last = path.rfind(separator, end);
    if (last == ustring::npos)
        return {};
    const std::size_t keep = path.find_last_not_of(separator, last);
    // Only separators before the last component: the parent is the root.
    if (keep == ustring::npos)
        return ustring(1, separator);
    return path.substr(0, keep + 1);
}

ustring extract_filename(const ustring& path)
{
    const std::size_t last = path.rfind(separator);
    return last == ustring::npos ? path : path.substr(last + 1);
}

ustring extract_extension(const ustring& path)
{
    const ustring name = extract_filename(path);
    if (name == upath_constant::PARENT_DIRECTORY)
        return {};
    const std::size_t dot = name.rfind(u'.');
    // A leading dot marks a hidden file, not an extension; this also covers ".".
    if (dot == ustring::npos || dot == 0)
        return {};
    return name.substr(dot);
}

ustring extract_stem(const ustring& path)
{
    ustring name = extract_filename(path);
    name.resize(name.size() - extract_extension(name).size());
    return name;
}

bool is_absolute(const ustring& path)
{
    return !path.empty() && path.front() == separator;
}

ustring make_native_form(const ustring& path, bool remove_current_directory)
{
    if (path.empty())
        return path;
    const bool absolute = is_absolute(path);
    ustring result;
    result.reserve(path.size());
    if (absolute)
        result += separator;
    std::size_t begin = 0;
    while (begin < path.size()) {
        if (path[begin] == separator) {
            ++begin;
            continue;
        }
        std::size_t end = path.find(separator, begin);
        if (end == ustring::npos)
            end = path.size();
        if (!(remove_current_directory && is_dot_component(path, begin, end))) {
            if (!result.empty() && result.back() != separator)
                result += separator;
            result.append(path, begin, end - begin);
        }
        begin = end;
    }
    if (result.empty())
        result = upath_constant::CURRENT_DIRECTORY;
    return result;
}

}  // namespace fl::filesystem::detail
