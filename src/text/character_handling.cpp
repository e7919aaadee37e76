// The handling-mode mask: its named values and the one check made when it is built.
#include <fl/i18n/character_handling.hpp>
#include <fl/i18n/ctype_error.hpp>

#include "common/throw_exception.hpp"

namespace fl::i18n {

const unsigned int character_handling_mode_context::default_mode = 0;
const unsigned int character_handling_mode_context::case_insensitive_mode = 1;
const unsigned int character_handling_mode_context::normalized_compose_mode = 2;
const unsigned int character_handling_mode_context::normalized_decompose_mode = 6;
const unsigned int character_handling_mode_context::locale_mode = 8;
const unsigned int character_handling_mode_context::normalization_insensitive_mode = 16;

character_handling_mode_context::character_handling_mode_context(unsigned int mask) : mask_(mask)
{
    if (mask > 31)
        fl::detail::throw_exception(CtypeInvalidArgument());
}

character_handling_mode_context::~character_handling_mode_context() = default;

}  // namespace fl::i18n
