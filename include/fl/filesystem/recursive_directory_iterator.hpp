// Breadth-first iteration over a whole directory tree, one open directory at a time.
#pragma once

#include <fl/filesystem/directory_iterator.hpp>
#include <fl/i18n/export.hpp>

#include <boost/iterator/iterator_facade.hpp>

#include <memory>

namespace fl::filesystem {

/// Every entry under a root, directories included, in breadth-first order: all entries of a
/// directory (in the system's order) before any of its subdirectories is opened. Symbolic
/// links are reported and never followed; entries that vanish before they are examined are
/// passed over. Copies share the traversal. Errors of opening or reading a subdirectory
/// (AccessDenied...) arrive from the increment that reaches it. For one thread at a time.
class QXI18N_API upath_recursive_directory_iterator
    : public boost::iterator_facade<upath_recursive_directory_iterator, const upath_directory_entry,
                                    boost::forward_traversal_tag> {
public:
    /// The end iterator.
    upath_recursive_directory_iterator();
    /// The first entry under `root`, dot entries left out; an empty root gives the end iterator.
    explicit upath_recursive_directory_iterator(const upath& root);
    explicit upath_recursive_directory_iterator(const ustring& root);
    /// Goes on from `start`, whose filter and dot policy apply to its own directory only.
    explicit upath_recursive_directory_iterator(upath_directory_iterator start);

    /// The current entry. Throws InvalidOperation at the end.
    const upath_directory_entry& dereference() const;
    /// Moves to the next entry. Throws InvalidOperation at the end.
    void increment();
    /// True for copies of one traversal at the same place, and for two end iterators.
    bool equal(const upath_recursive_directory_iterator& other) const;

    class Impl;

private:
    std::shared_ptr<Impl> impl_;
};

}  // namespace fl::filesystem
