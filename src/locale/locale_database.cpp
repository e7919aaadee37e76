// The file loop of the locale database: the file read in 1024-byte chunks into an Expat parser
// whose events go to an EventHandler.
#ifndef XML_DTD
#define XML_DTD  // declares the entity-amplification limits of expat.h
#endif

#include "locale_database.hpp"

#include "common/throw_exception.hpp"

#include <fl/filesystem/foundation/fstream.hpp>
#include <fl/i18n/locale_database_error.hpp>

#include <expat.h>

#include <sys/stat.h>

#include <exception>
#include <memory>
#include <type_traits>

namespace fl::i18n::lcmgmt {
namespace {

struct xml_parser_free {
    void operator()(XML_Parser parser) const noexcept { XML_ParserFree(parser); }
};
using xml_parser_ptr = std::unique_ptr<std::remove_pointer_t<XML_Parser>, xml_parser_free>;

constexpr std::streamsize chunk_bytes = 1024;
// A document may expand its entities to at most this many times its own size, once the
// expansion has passed the threshold: enough for any honest database, fatal to "billion laughs".
constexpr float max_amplification = 100.0F;
constexpr unsigned long long amplification_threshold = 1024 * 1024;

// What the callbacks share: the first non-zero result stops the parse, and an exception is kept
// for the caller instead of unwinding through Expat's C frames.
struct parse_state {
    XML_Parser parser = nullptr;
    EventHandler* handler = nullptr;
    int result = 0;
    std::exception_ptr failure;
};

template <class Call>
void dispatch(void* user_data, Call&& call) noexcept
{
    auto& state = *static_cast<parse_state*>(user_data);
    if (state.result != 0)
        return;
    try {
        state.result = call(*state.handler);
    } catch (...) {
        state.failure = std::current_exception();
        state.result = -1;
    }
    if (state.result != 0)
        XML_StopParser(state.parser, XML_FALSE);
}

extern "C" void lcdata_on_declaration(void* user_data, const XML_Char* version, const XML_Char* encoding, int standalone)
{
    dispatch(user_data, [&](EventHandler& h) { return h.on_xml_declaration(version, encoding, standalone); });
}

extern "C" void lcdata_on_start(void* user_data, const XML_Char* name, const XML_Char** attributes)
{
    dispatch(user_data, [&](EventHandler& h) { return h.on_start_element(name, attributes); });
}

extern "C" void lcdata_on_end(void* user_data, const XML_Char* name)
{
    dispatch(user_data, [&](EventHandler& h) { return h.on_end_element(name); });
}

extern "C" void lcdata_on_text(void* user_data, const XML_Char* text, int length)
{
    dispatch(user_data, [&](EventHandler& h) { return h.on_character_data(text, length); });
}

// Only a regular file is opened: a FIFO would block the open, a device could stream for ever.
void check_file(const std::string& path)
{
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode))
        fl::detail::throw_exception(LcRscOpenFileFailure(path));
    if (static_cast<unsigned long long>(info.st_size) > max_database_bytes)
        fl::detail::throw_exception(LcRscFileReadFailure(path));
}

[[noreturn]] void throw_parse_error(XML_Parser parser)
{
    const XML_Error code = XML_GetErrorCode(parser);
    const XML_LChar* text = XML_ErrorString(code);
    fl::detail::throw_exception(LcRscInvalidXmlDoc(text ? text : "unknown error", XML_GetCurrentColumnNumber(parser),
                                                   XML_GetCurrentLineNumber(parser)));
}

}  // namespace

void parse_xml_file(EventHandler& handler, const std::string& path)
{
    check_file(path);
    fl::filesystem::basic_ifstream<char> in(path, std::ios_base::binary);
    if (!in.is_open())
        fl::detail::throw_exception(LcRscOpenFileFailure(path));

    const xml_parser_ptr parser(XML_ParserCreate(handler.get_encoding().c_str()));
    if (!parser)
        fl::detail::throw_exception(LcRscParserCreationFailure());
    if (!XML_SetBillionLaughsAttackProtectionMaximumAmplification(parser.get(), max_amplification) ||
        !XML_SetBillionLaughsAttackProtectionActivationThreshold(parser.get(), amplification_threshold))
        fl::detail::throw_exception(LcRscParserCreationFailure());

    parse_state state;
    state.parser = parser.get();
    state.handler = &handler;
    XML_SetUserData(parser.get(), &state);
    XML_SetXmlDeclHandler(parser.get(), lcdata_on_declaration);
    XML_SetElementHandler(parser.get(), lcdata_on_start, lcdata_on_end);
    XML_SetCharacterDataHandler(parser.get(), lcdata_on_text);

    char buffer[chunk_bytes];
    std::size_t total = 0;
    for (;;) {
        in.read(buffer, chunk_bytes);
        if (in.bad())
            fl::detail::throw_exception(LcRscFileReadFailure(path));
        const std::streamsize count = in.gcount();
        // The size was checked before opening; a file that grows since is refused all the same.
        total += static_cast<std::size_t>(count);
        if (total > max_database_bytes)
            fl::detail::throw_exception(LcRscFileReadFailure(path));
        const bool last = in.eof();
        const XML_Status status =
            XML_Parse(parser.get(), buffer, static_cast<int>(count), last ? XML_TRUE : XML_FALSE);
        if (state.failure)
            std::rethrow_exception(state.failure);
        if (status == XML_STATUS_ERROR)
            throw_parse_error(parser.get());
        if (last)
            return;
    }
}

}  // namespace fl::i18n::lcmgmt

namespace fl::i18n::detail {

void load_locale_database(locale_registry& registry, std::vector<std::string>& event_log, const std::string& path)
{
    lcmgmt::LcdbEventHandler handler(registry, event_log);
    lcmgmt::parse_xml_file(handler, path);
}

}  // namespace fl::i18n::detail
