// status_parts.cpp - see status_parts.hpp.
#include "server/web/status_parts.hpp"

namespace tovrik
{
namespace
{

std::string make_class(const table_column& column)
{
    return column.is_number ? " class=\"number\"" : "";
}

std::string make_heading(const std::vector<table_column>& columns)
{
    std::string row = "<thead role=\"rowgroup\"><tr role=\"row\">";
    for (const table_column& column : columns)
        row += "<th role=\"columnheader\" scope=\"col\"" + make_class(column) + '>' + column.title +
               "</th>";
    return row + "</tr></thead>\n";
}

std::string make_row(const std::vector<table_column>& columns, const table_row& row)
{
    std::string text = row.is_marked ? "<tr role=\"row\" class=\"marked\">" : "<tr role=\"row\">";
    for (std::size_t i = 0; i < columns.size(); ++i)
        text += "<td role=\"cell\"" + make_class(columns[i]) + " data-title=\"" + columns[i].title +
                "\"><div>" + row.cells[i] + "</div></td>";
    return text + "</tr>\n";
}

} // namespace

std::string status_table(const std::vector<table_column>& columns,
                         const std::vector<table_row>& rows)
{
    // The roles keep it a table for screen readers where the style makes cards of its rows.
    std::string table =
        "<table role=\"table\">\n" + make_heading(columns) + "<tbody role=\"rowgroup\">\n";
    for (const table_row& row : rows)
        table += make_row(columns, row);
    return table + "</tbody>\n</table>\n";
}

std::string status_facts(const char* kind, const std::vector<status_fact>& facts)
{
    std::string list = std::string{"<dl class=\""} + kind + "\">\n";
    for (const status_fact& fact : facts) {
        list += std::string{"<div><dt>"} + fact.title + "</dt><dd>" + fact.value;
        if (!fact.note.empty())
            list += " <small>" + fact.note + "</small>";
        list += "</dd></div>\n";
    }
    return list + "</dl>\n";
}

std::string status_section(const char* name, const char* title, const std::string& content)
{
    return std::string{"<section aria-labelledby=\""} + name + "\">\n<h2 id=\"" + name + "\">" +
           title + "</h2>\n" + content + "</section>\n";
}

} // namespace tovrik
