// web_pages.cpp - see web_pages.hpp.
#include "server/web/web_pages.hpp"

#include "server/base/utf8_text.hpp"
#include "server/web/directory_page.hpp"
#include "server/web/metrics_page.hpp"
#include "server/web/status_page.hpp"

#include <algorithm>

namespace tovrik
{
namespace
{

constexpr int unavailable = 503;

/// What a page is made of.
struct page_source {
    const server_report& report;
    const std::string& own_host;
    std::string trouble;
};

web_page make_status_page(const page_source& source)
{
    return {.type = "text/html; charset=utf-8", .text = status_page(source.report, source.trouble)};
}

web_page make_directory_page(const page_source& source)
{
    return {.type = "text/plain; charset=ISO-8859-1",
            .text = directory_page(source.report, source.own_host)};
}

web_page make_metrics_page(const page_source& source)
{
    return {.type = metrics_type, .text = metrics_page(source.report)};
}

web_page make_health_page(const page_source& source)
{
    if (source.trouble.empty())
        return {.text = "ok\n"};
    return {.status = unavailable, .text = utf8_of_latin1(source.trouble) + '\n'};
}

struct page_place {
    const char* path;
    web_page (*make)(const page_source& source);
};

constexpr page_place page_places[] = {
    {"/", make_status_page},
    {"/tovrikserver.main", make_directory_page},
    {"/metrics", make_metrics_page},
    {"/healthz", make_health_page},
};

} // namespace

web_page web_pages_find(const std::string& path, const std::string& own_host,
                        const dated_report& dated, std::chrono::milliseconds max_age)
{
    const auto* const place = std::ranges::find(page_places, path, &page_place::path);
    if (place == std::end(page_places))
        return {.status = 404, .text = "404 Not Found\n"};
    const std::string trouble = health_trouble(dated, max_age);
    if (dated.report == nullptr)
        return {.status = unavailable, .text = trouble + '\n'};
    return place->make({*dated.report, own_host, trouble});
}

} // namespace tovrik
