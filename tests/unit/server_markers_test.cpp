// server_markers_test.cpp - every row that a marker is written to has its place.
#include "ui/server_pane.hpp"

#include "unit/net_fixture.hpp"

#include <string>

namespace
{

using server_markers = net_test;

TEST_F(server_markers, are_kept_for_every_row_even_below_the_last_server)
{
    for (int count = 0; count <= 40; ++count) {
        if (count > 0)
            add_server((std::to_string(100 + count) + ".example").c_str());
        const int last = count + 2;
        for (const int row : {1, 2, last - 1, last, last + 3}) {
            server_marker_write(row, '#');
            EXPECT_EQ(server_marker_read(row), '#') << "row " << row << " of " << count;
            server_marker_write(row, marker_none);
            EXPECT_EQ(server_marker_read(row), marker_none);
        }
        EXPECT_GT(app_state.list_markers_count, last);
    }
}

TEST_F(server_markers, have_their_places_as_soon_as_the_list_is_drawn)
{
    add_server("one.example");
    EXPECT_GE(app_state.list_markers_count, 1 + 2 + 1);
    EXPECT_EQ(server_marker_read(3), marker_none);
}

} // namespace
