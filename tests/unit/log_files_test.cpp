// log_files_test.cpp - where transmissions are logged, and what is written.
#include "unit/log_fixture.hpp"

#include "net/transmission.hpp"

#include <filesystem>
#include <sys/stat.h>

namespace
{

class logging : public log_test
{
protected:
    void present(const std::string& elements) const
    {
        const xml_document document{xml_parse(transmission_xml(elements).c_str())};
        present_transmission(entry, document.get());
    }
};

TEST_F(logging, puts_the_servers_name_before_the_folder)
{
    folder.make_folder("srv");
    set_log_folder("logs");
    open_log_files(entry);
    EXPECT_NE(entry.log_file, nullptr);
    EXPECT_EQ(said(), (status_lines{{"Logfile 'srv/logs.log' successfully opened", 6}}));
    EXPECT_TRUE(folder.read_file("srv/logs.log").has_value());
    EXPECT_EQ(app_state.shared_log, nullptr);
}

TEST_F(logging, uses_the_host_name_where_there_is_no_alias)
{
    server_entry& unnamed = add_server("other.example");
    folder.make_folder("other.example");
    set_log_folder("logs");
    open_log_files(unnamed);
    EXPECT_EQ(said(), (status_lines{{"Logfile 'other.example/logs.log' successfully opened", 6}}));
}

TEST_F(logging, says_so_when_a_log_cannot_be_opened)
{
    set_log_folder("logs");
    open_log_files(entry);
    EXPECT_EQ(entry.log_file, nullptr);
    EXPECT_EQ(said(), (status_lines{{"Logfile 'srv/logs.log' not opened", 6}}));
    EXPECT_EQ(folder.files(), std::vector<std::string>{});
    present(plain_elements);
}

TEST_F(logging, uses_the_folder_as_it_is_set)
{
    folder.make_folder("srv");
    set_log_folder("./");
    open_log_files(entry);
    EXPECT_EQ(said(), (status_lines{{"Logfile 'srv/./.log' successfully opened", 6}}));
    EXPECT_TRUE(folder.read_file("srv/.log").has_value());
}

TEST_F(logging, uses_the_working_folder_where_none_is_set)
{
    const std::string current = std::filesystem::current_path();
    const std::string parent = current.substr(0, current.rfind('/'));
    folder.make_folder("srv" + parent);
    open_log_files(entry);
    EXPECT_NE(entry.log_file, nullptr);
    EXPECT_EQ(said(), (status_lines{{"Logfile 'srv/" + current + ".log' successfully opened", 6}}));
    close_log_file(entry);
    set_log_folder("");
    mark();
    open_log_files(entry);
    EXPECT_EQ(said(), (status_lines{{"Logfile 'srv/" + current + ".log' successfully opened", 6}}));
}

TEST_F(logging, drops_the_slash_of_the_root_folder)
{
    server_entry& nowhere = add_server("no-such-folder.example");
    ASSERT_EQ(chdir("/"), 0);
    open_log_files(nowhere);
    EXPECT_EQ(said(), (status_lines{{"Logfile 'no-such-folder.example/.log' not opened", 6}}));
}

TEST_F(logging, keeps_one_shared_log_in_the_folder)
{
    app_state.setting_flags = SaveToOne;
    folder.make_folder("logs");
    set_log_folder("logs");
    open_log_files(entry);
    EXPECT_NE(app_state.shared_log, nullptr);
    EXPECT_EQ(entry.log_file, nullptr);
    EXPECT_EQ(said(), (status_lines{{"Logfile 'logs/ACARS.log' successfully opened", 6}}));
    // It is opened once, whichever server connects next.
    std::FILE* const opened = app_state.shared_log;
    open_log_files(add_server("other.example"));
    EXPECT_EQ(app_state.shared_log, opened);
    EXPECT_EQ(said().size(), 1U);
}

TEST_F(logging, says_so_when_the_shared_log_cannot_be_opened)
{
    app_state.setting_flags = SaveToOne;
    set_log_folder("missing");
    open_log_files(entry);
    EXPECT_EQ(app_state.shared_log, nullptr);
    EXPECT_EQ(said(), (status_lines{{"Logfile 'missing/ACARS.log' not opened", 6}}));
}

TEST_F(logging, prefers_the_shared_log_when_both_are_on)
{
    app_state.setting_flags = ACARSLog | SaveToOne;
    set_log_folder(".");
    open_log_files(entry);
    EXPECT_EQ(entry.log_file, nullptr);
    EXPECT_EQ(said(), (status_lines{{"Logfile './ACARS.log' successfully opened", 6}}));
}

TEST_F(logging, uses_a_log_that_is_still_open)
{
    folder.make_folder("srv");
    set_log_folder("logs");
    open_log_files(entry);
    std::FILE* const opened = entry.log_file;
    open_log_files(entry);
    EXPECT_EQ(entry.log_file, opened);
}

TEST_F(logging, opens_names_of_up_to_255_bytes)
{
    folder.make_folder("srv");
    const std::string longest(255 - 4 - 4, 'l'); // between "srv/" and ".log"
    set_log_folder(longest.c_str());
    open_log_files(entry);
    EXPECT_NE(entry.log_file, nullptr);
    EXPECT_EQ(said(), (status_lines{{"Logfile 'srv/" + longest + ".log' successfully opened", 6}}));
    EXPECT_TRUE(folder.read_file("srv/" + longest + ".log").has_value());
}

TEST_F(logging, does_not_open_longer_names)
{
    folder.make_folder("srv");
    const std::string too_long(255 - 4 - 3, 'l');
    set_log_folder(too_long.c_str());
    open_log_files(entry);
    EXPECT_EQ(entry.log_file, nullptr);
    ASSERT_EQ(said().size(), 1U);
    EXPECT_EQ(said()[0].text.substr(0, 260), "Logfile 'srv/" + too_long.substr(0, 247));
    EXPECT_TRUE(said()[0].text.ends_with("' not opened")) << said()[0];
    EXPECT_EQ(folder.files(), (std::vector<std::string>{"srv/"}));
}

TEST_F(logging, does_not_wait_for_a_reader_of_a_fifo)
{
    folder.make_folder("srv");
    ASSERT_EQ(mkfifo("srv/logs.log", 0600), 0);
    set_log_folder("logs");
    open_log_files(entry);
    EXPECT_EQ(entry.log_file, nullptr);
    EXPECT_EQ(said(), (status_lines{{"Logfile 'srv/logs.log' not opened", 6}}));
}

TEST_F(logging, writes_every_record_at_once_and_exactly)
{
    folder.make_folder("srv");
    set_log_folder("logs");
    open_log_files(entry);
    present(plain_elements);
    EXPECT_EQ(folder.read_file("srv/logs.log"), plain_record);
    present(plain_elements + content_elements);
    EXPECT_EQ(folder.read_file("srv/logs.log"), plain_record + content_record);
}

TEST_F(logging, writes_what_is_shown_with_its_percent_signs_replaced)
{
    folder.make_folder("srv");
    set_log_folder("logs");
    open_log_files(entry);
    present("<ACARS><MessageDate><Minute>50%</Minute></MessageDate></ACARS>"
            "<Contacts>2 contacts</Contacts>");
    EXPECT_EQ(folder.read_file("srv/logs.log"),
              "\nACARS mode:   Aircraft reg:  []"
              "\nMessage label:  Block id:   Message number: "
              "\nFlight number:   Flight: -"
              "\nOperator: "
              "\n-------------------------------------------------[ // :50# ]-");
}

TEST_F(logging, appends_to_what_is_there)
{
    folder.make_folder("srv");
    folder.write_file("srv/logs.log", "yesterday");
    set_log_folder("logs");
    open_log_files(entry);
    present(plain_elements);
    EXPECT_EQ(folder.read_file("srv/logs.log"), "yesterday" + plain_record);
}

class two_logs : public logging
{
protected:
    two_logs()
    {
        folder.make_folder("srv");
        set_log_folder("logs");
        open_log_files(entry);
        app_state.setting_flags = SaveToOne;
        set_log_folder(".");
        open_log_files(entry);
        EXPECT_NE(entry.log_file, nullptr);
        EXPECT_NE(app_state.shared_log, nullptr);
    }

    std::string own() const
    {
        return folder.read_file("srv/logs.log").value_or("missing");
    }
    std::string shared() const
    {
        return folder.read_file("ACARS.log").value_or("missing");
    }
};

TEST_F(two_logs, are_never_both_written)
{
    app_state.setting_flags = ACARSLog | SaveToOne;
    present(plain_elements);
    EXPECT_EQ(own(), plain_record);
    EXPECT_EQ(shared(), "");
}

TEST_F(two_logs, the_shared_log_takes_what_the_servers_log_does_not)
{
    present(plain_elements);
    EXPECT_EQ(own(), "");
    EXPECT_EQ(shared(), plain_record);
    app_state.setting_flags = ACARSLog | SaveToOne;
    close_log_file(entry);
    present(plain_elements);
    EXPECT_EQ(shared(), plain_record + plain_record);
}

TEST_F(two_logs, are_left_alone_while_logging_is_off)
{
    app_state.setting_flags = 0;
    present(plain_elements);
    EXPECT_EQ(own() + shared(), "");
}

TEST_F(two_logs, the_shared_log_holds_the_records_of_all_servers)
{
    server_entry& other = add_server("other.example");
    log_transmission(entry, "\none");
    log_transmission(other, "\ntwo");
    EXPECT_EQ(shared(), "\none\ntwo");
}

TEST_F(two_logs, close_once)
{
    close_log_file(entry);
    close_log_file(entry);
    close_shared_log();
    close_shared_log();
    EXPECT_EQ(entry.log_file, nullptr);
    EXPECT_EQ(app_state.shared_log, nullptr);
}

} // namespace
