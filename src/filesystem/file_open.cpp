// fopen and freopen by UTF-16 name: failures are reported by errno and a null result, never thrown.
#include "filesystem_internal.hpp"

#include <fl/filesystem/file_open.hpp>
#include <fl/filesystem/foundation/pathname.hpp>

#include <cerrno>

namespace fl::filesystem {

namespace {

using name_converter = fl::i18n::converter<char, char16_t>;

// `native` tells a ustring, which is made native here and may not end in a separator, from the
// text of a upath, which is native already and goes to the system as it is.
template <class Open>
std::FILE* open_by_name(const ustring& name, const std::string& mode, bool native, const name_converter* converter,
                        Open&& open)
{
    errno = 0;
    if (name.empty() || name.front() == u'\0' || mode.empty()) {
        errno = EINVAL;
        return nullptr;
    }
    // A name ending in a separator cannot be a file: no need to ask the system.
    if (!native && name.back() == upath_constant::PATHNAME_SEPARATOR[0]) {
        errno = EISDIR;
        return nullptr;
    }
    try {
        const ustring text = native ? name : detail::make_native_form(name, true);
        const std::string bytes = converter ? converter->convert(text.data(), text.size())
                                            : detail::to_filesystem_bytes(text);
        return open(bytes.c_str(), mode.c_str());
    } catch (...) {
        set_errno_from_current_exception();
        return nullptr;
    }
}

std::FILE* open_file(const ustring& name, const std::string& mode, bool native, const name_converter* converter)
{
    return open_by_name(name, mode, native, converter,
                        [](const char* path, const char* how) { return detail::libc().fopen(path, how); });
}

std::FILE* reopen_file(const ustring& name, const std::string& mode, std::FILE* stream, bool native,
                       const name_converter* converter)
{
    if (stream == nullptr) {
        errno = EINVAL;
        return nullptr;
    }
    return open_by_name(name, mode, native, converter,
                        [stream](const char* path, const char* how) { return detail::libc().freopen(path, how, stream); });
}

}  // namespace

std::FILE* fopen(const ustring& name, const std::string& mode) { return open_file(name, mode, false, nullptr); }

std::FILE* fopen(const ustring& name, const std::string& mode, const name_converter& converter)
{
    return open_file(name, mode, false, &converter);
}

std::FILE* fopen(const upath& name, const std::string& mode) { return open_file(name.string(), mode, true, nullptr); }

std::FILE* fopen(const upath& name, const std::string& mode, const name_converter& converter)
{
    return open_file(name.string(), mode, true, &converter);
}

std::FILE* freopen(const ustring& name, const std::string& mode, std::FILE* stream)
{
    return reopen_file(name, mode, stream, false, nullptr);
}

std::FILE* freopen(const ustring& name, const std::string& mode, std::FILE* stream, const name_converter& converter)
{
    return reopen_file(name, mode, stream, false, &converter);
}

std::FILE* freopen(const upath& name, const std::string& mode, std::FILE* stream)
{
    return reopen_file(name.string(), mode, stream, true, nullptr);
}

std::FILE* freopen(const upath& name, const std::string& mode, std::FILE* stream, const name_converter& converter)
{
    return reopen_file(name.string(), mode, stream, true, &converter);
}

}  // namespace fl::filesystem
