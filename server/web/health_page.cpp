// health_page.cpp - see health_page.hpp.
#include "server/web/health_page.hpp"

#include "server/web/web_text.hpp"

namespace tovrik
{

std::string health_trouble(const dated_report& dated, std::chrono::milliseconds max_age)
{
    if (dated.report == nullptr)
        return "The server has only just started";
    if (dated.age > max_age)
        return "The server has not moved for " +
               web_duration(std::chrono::duration_cast<std::chrono::seconds>(dated.age).count());
    if (dated.report->is_healthy)
        return {};
    return dated.report->trouble.empty() ? "The server is in trouble"
                                         : web_field(dated.report->trouble);
}

} // namespace tovrik
