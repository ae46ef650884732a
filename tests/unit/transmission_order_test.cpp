// transmission_order_test.cpp - a transmission is in its log before it is on the screen, so that
// nothing is seen that a crash could still lose.
#include "net/transmission.hpp"

#include "data/xml.hpp"
#include "ui/layout.hpp"
#include "unit/log_fixture.hpp"

#include <string>

namespace
{

std::string seen_when_logged;

} // namespace

extern "C" {
void __real__Z16log_transmissionR12server_entryPKc(server_entry& entry, const char* text);
void __wrap__Z16log_transmissionR12server_entryPKc(server_entry& entry, const char* text);
}

void __wrap__Z16log_transmissionR12server_entryPKc(server_entry& entry, const char* text)
{
    seen_when_logged.clear();
    for (int row = 1; app_state.message_pane != nullptr && row <= layout_message_row(); ++row) {
        for (int column = 1; column < getmaxx(app_state.message_pane) - 1; ++column)
            seen_when_logged +=
                static_cast<char>(mvwinch(app_state.message_pane, row, column) & A_CHARTEXT);
    }
    __real__Z16log_transmissionR12server_entryPKc(entry, text);
}

namespace
{

using transmission_order = log_test;

TEST_F(transmission_order, is_first_the_log_and_then_the_screen)
{
    folder.make_folder("srv");
    set_log_folder("logs");
    open_log_files(entry);
    const xml_document document{xml_parse(transmission_xml(plain_elements).c_str())};
    present_transmission(entry, document.get());
    EXPECT_EQ(folder.read_file("srv/logs.log"), plain_record);
    EXPECT_EQ(seen_when_logged.find("LH0123"), std::string::npos);
    present_transmission(entry, document.get());
    EXPECT_NE(seen_when_logged.find("LH0123"), std::string::npos) << "the first one";
}

} // namespace
