// The grammar of lcdata.xml: the element validator and the handler that turns elements into
// registry writes.
#include "locale_database.hpp"

#include <cstring>

namespace fl::i18n::lcmgmt {
namespace {

constexpr int stop = -2;

// The value of attribute `name`, or empty; an empty value counts as absent anyway.
std::string_view attribute(const char** attributes, const char* name) noexcept
{
    for (const char** at = attributes; at != nullptr && at[0] != nullptr; at += 2)
        if (std::strcmp(at[0], name) == 0)
            return at[1];
    return {};
}

bool equal_ignoring_ascii_case(std::string_view a, std::string_view b) noexcept
{
    return a.size() == b.size() && detail::lower_key(a) == detail::lower_key(b);
}

}  // namespace

EventValidator::EventValidator()
{
    static constexpr struct {
        const char* name;
        int id;
        const char* parent;
    } grammar[] = {
        {"lcdata", 1, ""},          {"locale", 2, "lcdata"},   {"alias", 3, "locale"},
        {"region_alias", 4, "locale"}, {"l10n", 5, "locale"},  {"codeset", 6, "lcdata"},
        {"encoding", 7, "codeset"}, {"encoding_alias", 8, "encoding"},
    };
    for (const auto& element : grammar)
        elements_.emplace(element.name, std::make_shared<EventDesc>(EventDesc{element.id, element.parent}));
}

int EventValidator::on_start(std::string_view name)
{
    const auto found = elements_.find(std::string(name));
    if (found == elements_.end())
        return stop;
    const EventDesc& desc = *found->second;
    // The document element is not checked against "lcdata": a fragment of the grammar loads too.
    if (open_.empty()) {
        open_.emplace_back(name);
        return desc.id;
    }
    // Nothing is pushed, so the end tag of the inner element closes the outer one, and the
    // outer end tag is refused.
    if (open_.back() == name)
        return desc.id;
    if (desc.parent_name != open_.back())
        return stop;
    open_.emplace_back(name);
    return desc.id;
}

int EventValidator::on_end(std::string_view name)
{
    if (open_.empty() || open_.back() != name)
        return stop;
    open_.pop_back();
    return 0;
}

EventHandler::~EventHandler() = default;

LcdbEventHandler::LcdbEventHandler(detail::locale_registry& registry, std::vector<std::string>& event_log)
    : writer_(registry, event_log)
{
}

int LcdbEventHandler::on_xml_declaration(const char*, const char* encoding, int)
{
    if (encoding == nullptr)
        return 0;
    return equal_ignoring_ascii_case(encoding, encoding_) ? 0 : stop;
}

int LcdbEventHandler::on_start_element(const char* name, const char** attributes)
{
    const int id = validator_.on_start(name);
    switch (id) {
    case 1:
    case 6:
        return 0;
    case 2:
        locale_name_ = attribute(attributes, "name");
        locale_encoding_ = attribute(attributes, "encoding");
        locale_xpg_name_ = attribute(attributes, "xpg_name");
        locale_disable_user_locale_ = attribute(attributes, "disable_user_locale");
        encoding_name_.clear();
        if (locale_name_.empty())
            return stop;
        writer_.addLcName(locale_name_, locale_encoding_, locale_xpg_name_);
        return 0;
    case 3:
    case 4: {
        const std::string_view alias = attribute(attributes, "name");
        if (alias.empty())
            return stop;
        if (id == 3)
            writer_.addAliasLcName(locale_name_, alias);
        else
            writer_.addRegionAliasLcName(locale_name_, alias);
        return 0;
    }
    case 5: {
        const std::string_view disable = attribute(attributes, "disable");
        if (disable.empty())
            return stop;
        writer_.addL10nFlag(locale_name_, disable);
        return 0;
    }
    case 7: {
        encoding_name_ = attribute(attributes, "name");
        if (encoding_name_.empty())
            return stop;
        writer_.addEncodingName(encoding_name_, attribute(attributes, "jvm_encoding"), attribute(attributes, "compat"));
        return 0;
    }
    case 8: {
        const std::string_view alias = attribute(attributes, "name");
        if (encoding_name_.empty() || alias.empty())
            return stop;
        writer_.addEncodingAlias(encoding_name_, alias);
        return 0;
    }
    default:
        return stop;
    }
}

int LcdbEventHandler::on_character_data(const char*, int) { return 0; }

int LcdbEventHandler::on_end_element(const char* name) { return validator_.on_end(name); }

}  // namespace lcmgmt
