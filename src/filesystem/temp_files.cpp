// Temporary directories and files: the candidate search over the environment, unique names,
// and files created under them.
#include "filesystem_internal.hpp"

#include "common/throw_exception.hpp"

#include <fl/filesystem/file_name_conversion.hpp>
#include <fl/filesystem/file_open.hpp>
#include <fl/filesystem/foundation/file_status.hpp>
#include <fl/filesystem/foundation/pathname.hpp>
#include <fl/filesystem/foundation/pathname_encoding.hpp>
#include <fl/i18n/environment.hpp>

#include <boost/filesystem/operations.hpp>
#include <boost/uuid/random_generator.hpp>
#include <boost/uuid/uuid_io.hpp>

#include <unistd.h>

#include <cerrno>
#include <exception>

namespace fl::filesystem {

namespace {

constexpr char16_t separator = upath_constant::PATHNAME_SEPARATOR[0];

std::vector<ustring> temp_candidates(const std::vector<std::string>& variable_names)
{
    std::vector<ustring> candidates;
    const auto add = [&candidates](const std::string& variable) {
        ustring value = fl::i18n::getenv(variable);
        if (!value.empty())
            candidates.push_back(std::move(value));
    };
    for (const std::string& variable : variable_names)
        add(variable);
    for (const char* variable : {"TMPDIR", "TMP", "TEMP"})
        add(variable);
    candidates.emplace_back(u"/tmp");
    return candidates;
}

// The first candidate that is a directory with read and write access. Failing that, the error
// reported is the last candidate's: its errno, or the exception that ended its test.
ustring find_temp_directory(const std::vector<std::string>& variable_names)
{
    int failure = 0;
    bool any_failed = false;
    ustring failed_candidate;
    std::exception_ptr stored;
    for (const ustring& candidate : temp_candidates(variable_names)) {
        try {
            const file_status::type_type type = status(candidate).type();
            if (type == file_status::file_not_found) {
                failure = ENOENT;
            } else if (type != file_status::directory_file) {
                failure = ENOTDIR;
            } else {
                const std::string bytes = pathname_traits<char16_t>::to_filesystem(candidate);
                if (detail::libc().access(bytes.c_str(), R_OK | W_OK) == 0)
                    return candidate;
                failure = errno;
            }
        } catch (...) {
            stored = std::current_exception();
            failure = 0;
        }
        any_failed = true;
        failed_candidate = candidate;
    }
    if (!any_failed)
        fl::detail::throw_exception(TempEnvNotSpecified());
    if (failure != 0) {
        const codecvt_ustring_to_filesystem lenient(true);
        throw_file_system_error(failure, lenient.convert(failed_candidate.data(), failed_candidate.size()), "");
    }
    std::rethrow_exception(stored);
}

// 64 random bits as "hhhh-hhhh-hhhh-hhhh"; a random UUID if the system's source fails there.
std::string random_text()
{
    try {
        return boost::filesystem::unique_path("%%%%-%%%%-%%%%-%%%%").native();
    } catch (...) {
        boost::uuids::random_generator generate;
        return boost::uuids::to_string(generate());
    }
}

ustring make_unique_name(const ustring& directory, const ustring& prefix, const ustring& extension)
{
    const std::string random = random_text();
    if (random.empty())
        return ustring();
    ustring name = detail::make_native_form(directory, true);
    if (name.empty() || name.back() != separator)
        name += separator;
    name += prefix;
    name += codecvt_filesystem_to_ustring(true).convert(random.data(), random.size());
    if (!extension.empty() && extension.front() != u'.')
        name += u'.';
    name += extension;
    return name;
}

}  // namespace

ustring temp_directory_name() { return temp_directory_name({}); }

ustring temp_directory_name(const std::vector<std::string>& variable_names)
{
    const ustring found = find_temp_directory(variable_names);
    return found.empty() ? found : detail::make_native_form(found, true);
}

ustring tmpnam(const ustring& directory, const ustring& prefix, const ustring& extension)
{
    return make_unique_name(directory.empty() ? temp_directory_name() : directory, prefix, extension);
}

std::FILE* tmpfile(ustring& name, const ustring& directory, const ustring& prefix, const ustring& extension)
{
    try {
        const ustring where = directory.empty() ? temp_directory_name() : directory;
        if (!make_unique_name(where, prefix, extension).empty()) {
            // "wb+" does not create exclusively: the 64 random bits of the name keep names apart.
            for (int remaining = 10; remaining >= 0; --remaining) {
                ustring candidate = detail::make_native_form(make_unique_name(where, prefix, extension), true);
                const std::string bytes = detail::to_filesystem_bytes(candidate);
                if (std::FILE* file = detail::libc().fopen(bytes.c_str(), "wb+")) {
                    name = std::move(candidate);
                    return file;
                }
            }
        }
        // The errno of the last fopen is not kept: a caller tells failure by the null result.
        name.clear();
        errno = 0;
        return nullptr;
    } catch (...) {
        name.clear();
        set_errno_from_current_exception();
        return nullptr;
    }
}

}  // namespace fl::filesystem
