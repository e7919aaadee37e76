// Converters for the terminal's text, whose encoding can differ from the global locale's.
#include <fl/i18n/environment.hpp>
#include <fl/i18n/locale.hpp>

#include <variant>

namespace fl::i18n {

namespace {

// These items are always strings; any other alternative throws std::bad_variant_access.
std::string terminal_encoding(QxLcOptDataCtx::LcOptDataType item)
{
    return std::get<std::string>(QxLocale::global().getLocaleData(item));
}

}  // namespace

std::unique_ptr<codecvt_string_to_ustring> create_codecvt_terminal_to_ustring()
{
    return std::make_unique<codecvt_string_to_ustring>(terminal_encoding(QxLcOptDataCtx::termencoding), true);
}

std::unique_ptr<codecvt_ustring_to_string> create_codecvt_ustring_to_terminal()
{
    return std::make_unique<codecvt_ustring_to_string>(terminal_encoding(QxLcOptDataCtx::termencoding), true);
}

std::unique_ptr<codecvt_string_to_ustring> create_codecvt_terminal_input_to_ustring()
{
    return std::make_unique<codecvt_string_to_ustring>(terminal_encoding(QxLcOptDataCtx::terminputencoding), true);
}

std::unique_ptr<codecvt_ustring_to_string> create_codecvt_ustring_to_terminal_output()
{
    return std::make_unique<codecvt_ustring_to_string>(terminal_encoding(QxLcOptDataCtx::termoutputencoding),
                                                       true);
}

}  // namespace fl::i18n
