// The state of one directory iteration: a reader, the dot-entry policy and the shared entry.
#include "directory_internal.hpp"

#include <fl/filesystem/directory_iterator.hpp>

namespace fl::filesystem::detail {

upath_directory_iterator_impl::upath_directory_iterator_impl(const ustring& directory, initialization_mode,
                                                             bool include_dot_entries)
    : reader_(std::make_unique<directory_entry_without_wc_support_context>(directory)),
      include_dot_entries_(include_dot_entries)
{
    reader_->record = entry_.record_.get();
    increment();
}

upath_directory_iterator_impl::upath_directory_iterator_impl(const ustring& directory,
                                                             const pattern_string_context& pattern,
                                                             bool ignore_pattern_errors, initialization_mode,
                                                             bool include_dot_entries)
    : reader_(std::make_unique<directory_entry_with_wc_support_context>(directory, pattern, ignore_pattern_errors)),
      include_dot_entries_(include_dot_entries)
{
    reader_->record = entry_.record_.get();
    increment();
}

upath_directory_iterator_impl::~upath_directory_iterator_impl() = default;

void upath_directory_iterator_impl::increment()
{
    if (!reader_)
        return;
    // The dot entries pass the pattern ("*" matches them) and are dropped here.
    while (reader_->read_next()) {
        if (include_dot_entries_ || !reader_->last_name_is_dot_entry()) {
            fill_entry(reader_.get());
            return;
        }
    }
}

bool upath_directory_iterator_impl::is_open() const noexcept { return reader_ && reader_->is_open(); }

void upath_directory_iterator_impl::fill_entry(const directory_entry_context* reader)
{
    directory_entry_record& record = *entry_.record_;
    if (record.directory != reader->native_directory)
        record.directory = reader->native_directory;
}

}  // namespace fl::filesystem::detail
