// Internal pieces of directory iteration: the entry record, the two directory readers and the
// owning DIR* handle.
#pragma once

#include "filesystem_internal.hpp"
#include "text/pattern_match_impl.hpp"

#include <fl/filesystem/directory_iterator.hpp>
#include <fl/i18n/character_handling.hpp>

#include <cstdint>
#include <memory>
#include <string>

namespace fl::filesystem::detail {

/// Names up to this many bytes live in the record's inline buffer.
inline constexpr std::size_t inline_name_limit = 254;

/// What one directory entry is, as the system reported it. Shared by an iterator and the
/// entries it handed out.
struct directory_entry_record {
    directory_entry_record() = default;
    directory_entry_record(const directory_entry_record&) = delete;
    directory_entry_record& operator=(const directory_entry_record&) = delete;
    ~directory_entry_record() { delete[] long_name; }

    /// The name's bytes, NUL-terminated.
    const char* name_bytes() const noexcept { return long_name != nullptr ? long_name : name; }
    /// Stores `bytes`, of `length` bytes, in the inline buffer or in a heap copy.
    void set_name(const char* bytes, std::size_t length);

    std::string directory;         // native path of the directory, in file-system bytes
    std::uint64_t entry_type = 0;  // d_type, DT_UNKNOWN when the file system does not tell
    char name[256] = {};
    char* long_name = nullptr;     // owned; only for names of more than inline_name_limit bytes
};

struct dir_closer {
    void operator()(DIR* dir) const noexcept { libc().closedir(dir); }
};
using dir_ptr = std::unique_ptr<DIR, dir_closer>;

/// A reader over one open directory; read_next() stores the next entry in `record`.
class directory_entry_context {
public:
    virtual ~directory_entry_context();
    directory_entry_context(const directory_entry_context&) = delete;
    directory_entry_context& operator=(const directory_entry_context&) = delete;

    /// True when a new entry has been stored; false at the end, with the handle closed.
    virtual bool read_next() = 0;

    bool is_open() const noexcept { return handle != nullptr; }

    /// The last name read, as UTF-16. It is converted on first use into current_name's own
    /// storage: a plain listing then converts each name once, in the entry's filename().
    const ustring& last_name();
    /// True when the last name read is "." or "..". Every file-system encoding keeps ASCII's
    /// "." and "/", so the bytes tell without a conversion.
    bool last_name_is_dot_entry() const noexcept;

    ustring directory_name;  // as the caller named it
    ustring current_name;    // the wildcard before the first read; see last_name()
    std::string native_directory;
    fl::i18n::character_handling_mode_context mask{fl::i18n::character_handling_mode_context::default_mode};
    int open_error = 0;
    fl::i18n::detail::pattern_match_impl matcher;
    dir_ptr handle;
    directory_entry_record* record = nullptr;

protected:
    /// Opens `directory`; a failure is left in open_error for the caller to report.
    directory_entry_context(const ustring& directory, const ustring& first_name);
    /// Reads one entry into `record`; its name becomes last_name().
    bool read_one();
    /// The bytes of directory_name, "/", last_name(): where a failure is reported.
    std::string failure_path();

private:
    bool name_pending_ = false;  // record holds a name current_name does not have yet
};

class directory_entry_without_wc_support_context final : public directory_entry_context {
public:
    /// Throws through throw_file_system_error when the directory does not open.
    explicit directory_entry_without_wc_support_context(const ustring& directory);
    bool read_next() override;
};

class directory_entry_with_wc_support_context final : public directory_entry_context {
public:
    directory_entry_with_wc_support_context(const ustring& directory, const pattern_string_context& pattern,
                                            bool ignore_pattern_errors);
    bool read_next() override;
};

}  // namespace fl::filesystem::detail
