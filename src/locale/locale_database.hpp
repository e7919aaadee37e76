// The locale database reader: lcdata.xml read by Expat into the locale registry.
#pragma once

#include "locale_registry.hpp"

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace fl::i18n {
namespace lcmgmt {

/// The database's writes into the registry. Each add operation compares with what the registry
/// holds and asks for a modify operation only when something changes. A non-zero code of that
/// operation is no failure of the load: it goes to the event log as "caller::operation - values"
/// followed at once by the code, and is returned.
class LcData {
public:
    LcData(detail::locale_registry& registry, std::vector<std::string>& event_log);

    int addLcName(std::string_view name, std::string_view encoding, std::string_view xpg_name);
    int addAliasLcName(std::string_view locale, std::string_view alias);
    int addRegionAliasLcName(std::string_view locale, std::string_view alias);
    /// Stores `value` as the option "disable_l10n" of `locale`.
    int addL10nFlag(std::string_view locale, std::string_view value);
    int addEncodingName(std::string_view name, std::string_view jvm_encoding, std::string_view compat);
    int addEncodingAlias(std::string_view encoding, std::string_view alias);

private:
    int report(std::string_view caller, std::string_view operation, std::initializer_list<std::string_view> values,
               int code);
    int add_alias(detail::alias_kind kind, std::string_view locale, std::string_view alias);
    // Runs and reports the one of three operations that fits the values still given: both values,
    // only the first, or only the second.
    template <class Both, class First, class Second>
    int modify_given(std::string_view caller, const std::string_view (&operations)[3], std::string_view name,
                     std::string_view first, std::string_view second, const Both& both, const First& first_only,
                     const Second& second_only);

    detail::locale_registry* registry_;
    std::vector<std::string>* event_log_;
};

/// One element of the database grammar: its id and the element it must stand in.
struct EventDesc {
    int id = 0;
    std::string parent_name;  // empty for the document element
};

/// Checks the nesting of the database's elements as they open and close.
class EventValidator {
public:
    EventValidator();

    /// The element's id (1 to 8), or -2 for an unknown element or one out of place. The first
    /// element is accepted whatever it is; an element with the name of the open one is too.
    int on_start(std::string_view name);
    /// 0, or -2 when `name` is not the element that is open.
    int on_end(std::string_view name);

private:
    std::unordered_map<std::string, std::shared_ptr<EventDesc>> elements_;
    std::vector<std::string> open_;
};

/// What the XML reader calls as the document goes by. Each on_ operation returns 0 to go on and
/// anything else to stop the parse.
class EventHandler {
public:
    virtual ~EventHandler();
    /// `encoding` and `version` may be null; `standalone` is -1 when the declaration has none.
    virtual int on_xml_declaration(const char* version, const char* encoding, int standalone) = 0;
    /// `attributes` holds name and value pairs and ends with a null name.
    virtual int on_start_element(const char* name, const char** attributes) = 0;
    virtual int on_character_data(const char* text, int length) = 0;
    virtual int on_end_element(const char* name) = 0;
    /// The encoding the parser is created with.
    virtual const std::string& get_encoding() const = 0;

protected:
    EventValidator validator_;
};

/// Reads lcdata.xml into a registry.
class LcdbEventHandler final : public EventHandler {
public:
    LcdbEventHandler(detail::locale_registry& registry, std::vector<std::string>& event_log);

    int on_xml_declaration(const char* version, const char* encoding, int standalone) override;
    int on_start_element(const char* name, const char** attributes) override;
    int on_character_data(const char* text, int length) override;
    int on_end_element(const char* name) override;
    const std::string& get_encoding() const override { return encoding_; }

    /// The disable_user_locale attribute of the last locale element; kept, though nothing uses it.
    const std::string& disable_user_locale() const noexcept { return locale_disable_user_locale_; }

private:
    LcData writer_;
    std::string encoding_ = "UTF-8";
    std::string locale_name_;
    std::string locale_encoding_;
    std::string locale_xpg_name_;
    std::string locale_disable_user_locale_;
    std::string encoding_name_;
};

/// Parses the file at `path` (a native path) in chunks of 1024 bytes, calling `handler`.
/// Throws LcRscOpenFileFailure when the path is missing, unreadable or not a regular file,
/// LcRscFileReadFailure on a read error or a file larger than max_database_bytes,
/// LcRscParserCreationFailure, and LcRscInvalidXmlDoc for a document that is not well-formed,
/// that a handler stopped, or that expands entities beyond the parser's limits.
void parse_xml_file(EventHandler& handler, const std::string& path);

/// The largest database accepted; a real one is a few kilobytes.
inline constexpr std::size_t max_database_bytes = std::size_t{16} * 1024 * 1024;

}  // namespace lcmgmt

namespace detail {

/// Reads the database at `path` into `registry`; every non-zero code of a modify operation adds
/// an entry to `event_log` ("source - message" followed at once by the code). Throws the LcRsc*
/// exceptions; whatever was read before a failure stays in the registry.
void load_locale_database(locale_registry& registry, std::vector<std::string>& event_log, const std::string& path);

}  // namespace detail
}  // namespace fl::i18n
