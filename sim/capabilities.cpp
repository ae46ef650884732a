// capabilities.cpp - see capabilities.hpp.
#include "sim/capabilities.hpp"

#include "sim/xml_text.hpp"

namespace sim
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

} // namespace

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

} // namespace sim
