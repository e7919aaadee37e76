// The one way the library throws: wrapped for boost::exception_ptr, so that an exception
// captured with boost::current_exception() in one thread rethrows with its exact type in another.
#pragma once

#include <boost/exception/exception.hpp>

namespace fl::detail {

template <class E>
[[noreturn]] void throw_exception(const E& e)
{
    throw boost::exception_detail::clone_impl<E>(e);
}

}  // namespace fl::detail
