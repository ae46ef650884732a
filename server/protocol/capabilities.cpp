// capabilities.cpp - see capabilities.hpp.
#include "server/protocol/capabilities.hpp"

#include "server/protocol/xml_text.hpp"

#include <cstdlib>

namespace tovrik
{
namespace
{

struct capability_element {
    const char* name;
    std::optional<std::string> capability_texts::*text;
};

constexpr capability_element capability_elements[] = {
    {"Version", &capability_texts::version},    {"ServerUUID", &capability_texts::server_uuid},
    {"CRCCheck", &capability_texts::crc_check}, {"Mailing", &capability_texts::mailing},
    {"DBModify", &capability_texts::db_modify}, {"ModifyFlags", &capability_texts::modify_flags},
    {"Reports", &capability_texts::reports},    {"Pager", &capability_texts::pager},
    {"NeedAuth", &capability_texts::need_auth},
};

bool is_set(const std::optional<std::string>& text)
{
    return text && std::strtol(text->c_str(), nullptr, 10) != 0;
}

} // namespace

bool offers_updates(const capability_texts& texts)
{
    return is_set(texts.db_modify) || is_set(texts.modify_flags);
}

bool offers_mailings(const capability_texts& texts)
{
    return is_set(texts.mailing);
}

bool offers_reports(const capability_texts& texts)
{
    return is_set(texts.reports);
}

bool offers_pagers(const capability_texts& texts)
{
    return is_set(texts.pager);
}

std::string capabilities_xml(const capability_texts& texts)
{
    std::string xml = xml_declaration;
    xml += "<tovrik>\n";
    for (const auto& element : capability_elements) {
        if (const auto& text = texts.*element.text)
            append_element(xml, element.name, *text);
    }
    return xml += "</tovrik>\n";
}

} // namespace tovrik
