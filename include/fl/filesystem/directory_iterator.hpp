// Iteration over the entries of one directory, with an optional wildcard filter on the names.
#pragma once

#include <fl/filesystem/foundation/file_status.hpp>
#include <fl/filesystem/foundation/upath.hpp>
#include <fl/i18n/export.hpp>
#include <fl/i18n/ustring.hpp>

#include <boost/iterator/iterator_facade.hpp>
#include <boost/shared_ptr.hpp>

#include <memory>

namespace fl::filesystem {

/// Selects the one wildcard dialect: "*" matches any run of characters, everything else
/// (including "?" and "[") matches itself.
struct tolven_pattern_string_generator {};

/// Has no effect on this platform; kept so that callers name the way an iterator starts.
enum initialization_mode : int { default_initialization = 0 };

/// A wildcard and the regular expression made from it, as a directory iterator's filter.
/// Abstract: clients use a derived class such as wildcard_pattern_string_context.
class QXI18N_API pattern_string_context {
public:
    virtual ~pattern_string_context() = 0;

    /// The wildcard text, a single file name (no "/").
    const ustring& file_name() const noexcept { return file_name_; }
    /// The ICU regular expression matched against each whole name.
    const ustring& pattern() const noexcept { return pattern_; }

protected:
    pattern_string_context(const ustring& file_name, const ustring& pattern);
    pattern_string_context(const pattern_string_context&) = default;
    pattern_string_context& operator=(const pattern_string_context&) = default;

private:
    ustring file_name_;
    ustring pattern_;
};

namespace detail {

struct directory_entry_record;
class directory_entry_context;
class upath_directory_iterator_impl;

/// The ICU regular expression for the wildcard `name`: "^", the name with each run of "*" as
/// "(.|\r)*" and the characters $ ( ) * + . ? [ \ ^ { | } escaped, "$". An empty name gives an
/// empty pattern; "." and ".." give "^.*$". Safe on any input; throws only std::bad_alloc.
QXI18N_API ustring generate_pattern_from_filename(const ustring& name, const tolven_pattern_string_generator& tag);

}  // namespace detail

/// The filter for a wildcard, its pattern made by generate_pattern_from_filename.
class QXI18N_API wildcard_pattern_string_context : public pattern_string_context {
public:
    explicit wildcard_pattern_string_context(const ustring& wildcard);
    ~wildcard_pattern_string_context() override;
};

/// One entry of a directory, as a handle on the record of the iterator that produced it:
/// advancing the iterator changes what every copy of the entry shows. The name is kept as the
/// system's bytes; the text accessors convert with the calling thread's converter (strict or
/// lenient as that converter is) and throw its exception for undecodable bytes.
class QXI18N_API upath_directory_entry {
public:
    /// An entry with no name in no directory.
    upath_directory_entry();

    /// The name within its directory.
    ustring filename() const;
    /// Always empty: this platform keeps no second name.
    ustring alternative_filename() const;
    /// The absolute path of the directory.
    ustring pathname() const;
    /// The directory, "/" and the name.
    ustring full_pathname() const;

    /// The type of the entry itself (file_status::*_file). Costs no system call when the
    /// directory reported the type; otherwise lstat, and file_not_found if the entry has gone.
    /// Other failures throw through throw_file_system_error.
    file_status::type_type type() const;
    /// The type of what the entry refers to, following a link (stat when needed).
    file_status::type_type target_type() const;
    /// The same as target_type() on this platform.
    file_status::type_type target_type_without_validation() const;
    /// Type, permissions, times (microseconds) and size, following a link. An entry that has
    /// gone gives file_not_found; other failures throw through throw_file_system_error.
    file_status status() const;
    /// As status(), of the entry itself.
    file_status symlink_status() const;

    /// The raw record, shared with the iterator.
    const detail::directory_entry_record& record() const noexcept { return *record_; }

private:
    friend class detail::upath_directory_iterator_impl;
    boost::shared_ptr<detail::directory_entry_record> record_;
};

namespace detail {

/// The state of one directory iteration: the reader with its open DIR*, and the entry it
/// fills. Not copyable; for one thread at a time.
class QXI18N_API upath_directory_iterator_impl {
public:
    /// All entries of `directory`. Throws through throw_file_system_error if it cannot be opened.
    upath_directory_iterator_impl(const ustring& directory, initialization_mode mode, bool include_dot_entries);
    /// The entries whose names match `pattern`. A pattern with an empty side or a "/" in its
    /// file name throws InvalidArgument before the directory is touched; a pattern ICU refuses
    /// throws InvalidArgument unless `ignore_pattern_errors`, and then nothing matches.
    upath_directory_iterator_impl(const ustring& directory, const pattern_string_context& pattern,
                                  bool ignore_pattern_errors, initialization_mode mode, bool include_dot_entries);
    ~upath_directory_iterator_impl();
    upath_directory_iterator_impl(const upath_directory_iterator_impl&) = delete;
    upath_directory_iterator_impl& operator=(const upath_directory_iterator_impl&) = delete;

    /// Moves to the next entry; at the end is_open() becomes false and the DIR* is closed.
    void increment();
    /// True while the reader holds an open DIR*.
    bool is_open() const noexcept;
    void fill_entry(const directory_entry_context* reader);
    const upath_directory_entry& entry() const noexcept { return entry_; }

private:
    std::unique_ptr<directory_entry_context> reader_;
    bool include_dot_entries_;
    upath_directory_entry entry_;
};

}  // namespace detail

/// An input iterator over one directory, in the order the system gives, never sorted. Copies
/// share their position; all end iterators compare equal. Entries "." and ".." are left out
/// unless asked for.
template <class Impl, class Entry>
class basic_directory_iterator
    : public boost::iterator_facade<basic_directory_iterator<Impl, Entry>, const Entry, boost::single_pass_traversal_tag> {
public:
    /// The end iterator.
    basic_directory_iterator() = default;
    /// The first entry of `directory`; the empty path gives the end iterator without touching
    /// the disk. Throws PathNotFound, AccessDenied, NotDirectoryError... with the path.
    explicit basic_directory_iterator(const upath& directory, bool include_dot_entries = false)
    {
        reset_iterator(directory.string(), default_initialization, include_dot_entries);
    }
    /// The first entry of `directory` that matches `pattern` (see upath_directory_iterator_impl).
    basic_directory_iterator(const upath& directory, const pattern_string_context& pattern,
                             bool ignore_pattern_errors = false, bool include_dot_entries = false)
    {
        if (!directory.empty())
            start(boost::shared_ptr<Impl>(new Impl(directory.string(), pattern, ignore_pattern_errors,
                                                   default_initialization, include_dot_entries)));
    }

    /// Starts again on `directory`, as the constructor does.
    void reset_iterator(const ustring& directory, initialization_mode mode, bool include_dot_entries)
    {
        impl_.reset();
        if (!directory.empty())
            start(boost::shared_ptr<Impl>(new Impl(directory, mode, include_dot_entries)));
    }

private:
    friend class boost::iterator_core_access;

    void start(boost::shared_ptr<Impl> impl)
    {
        if (impl->is_open())
            impl_ = std::move(impl);
    }
    const Entry& dereference() const { return impl_->entry(); }
    void increment()
    {
        impl_->increment();
        if (!impl_->is_open())
            impl_.reset();
    }
    bool equal(const basic_directory_iterator& other) const noexcept { return impl_ == other.impl_; }

    boost::shared_ptr<Impl> impl_;
};

using upath_directory_iterator = basic_directory_iterator<detail::upath_directory_iterator_impl, upath_directory_entry>;

}  // namespace fl::filesystem
