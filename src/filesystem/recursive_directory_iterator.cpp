// The breadth-first tree walk: a queue of directories still to read and one open iterator.
#include <fl/filesystem/foundation/filesystem_error.hpp>
#include <fl/filesystem/foundation/pathname.hpp>
#include <fl/filesystem/recursive_directory_iterator.hpp>

#include <deque>

namespace fl::filesystem {

class upath_recursive_directory_iterator::Impl {
public:
    explicit Impl(upath_directory_iterator start) : current(getDirEntries(std::move(start))) {}

    bool isValid() const noexcept { return !pending.empty() || current != upath_directory_iterator(); }

    void increment()
    {
        if (!isValid())
            detail::throw_invalid_operation_exception();
        // The directory iterator drops its reader, and with it the DIR*, at its end.
        if (current != upath_directory_iterator())
            ++current;
        current = getDirEntries(current);
    }

    bool equal(const Impl& other) const { return current == other.current && pending == other.pending; }

    // The iterator at the next entry worth reporting, starting at `it`; queues directories.
    upath_directory_iterator getDirEntries(upath_directory_iterator it)
    {
        const upath_directory_iterator end;
        for (;;) {
            if (it == end) {
                if (pending.empty())
                    return end;
                const upath next = std::move(pending.front());
                pending.pop_front();
                it = upath_directory_iterator(next, false);
                continue;
            }
            // lstat: a link to a directory is reported as a link and never entered.
            const file_status::type_type type = it->symlink_status().type();
            if (type == file_status::directory_file) {
                const ustring path = it->full_pathname();
                const ustring name = detail::extract_filename(path);
                if (name != upath_constant::CURRENT_DIRECTORY && name != upath_constant::PARENT_DIRECTORY)
                    pending.emplace_back(detail::make_native_form(path, true));
                return it;
            }
            if (type != file_status::file_not_found && type != file_status::file_type_unknown)
                return it;
            ++it;
        }
    }

    std::deque<upath> pending;
    upath_directory_iterator current;
};

upath_recursive_directory_iterator::upath_recursive_directory_iterator() = default;

upath_recursive_directory_iterator::upath_recursive_directory_iterator(const upath& root)
    : upath_recursive_directory_iterator(upath_directory_iterator(root, false))
{
}

upath_recursive_directory_iterator::upath_recursive_directory_iterator(const ustring& root)
    : upath_recursive_directory_iterator(upath(root))
{
}

upath_recursive_directory_iterator::upath_recursive_directory_iterator(upath_directory_iterator start)
    : impl_(std::make_shared<Impl>(std::move(start)))
{
}

const upath_directory_entry& upath_recursive_directory_iterator::dereference() const
{
    if (!impl_ || impl_->current == upath_directory_iterator())
        detail::throw_invalid_operation_exception();
    return *impl_->current;
}

void upath_recursive_directory_iterator::increment()
{
    if (!impl_)
        detail::throw_invalid_operation_exception();
    impl_->increment();
}

bool upath_recursive_directory_iterator::equal(const upath_recursive_directory_iterator& other) const
{
    // A default-built iterator has no traversal: it stands for an ended one.
    static const Impl ended{upath_directory_iterator()};
    return (impl_ ? *impl_ : ended).equal(other.impl_ ? *other.impl_ : ended);
}

}  // namespace fl::filesystem
