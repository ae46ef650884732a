// sim_replay_file_test.cpp - recorded transmissions: how a file is cut, and what is refused.
#include "server/practice/replay_file.hpp"

#include "server/base/limits.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <unistd.h>

namespace
{

TEST(sim_replay_file, cuts_at_every_line_that_begins_with_a_declaration)
{
    const auto result = tovrik::split_documents("\n  \n<?xml version=\"1.0\"?>\n<a>1\n\n2</a>\n\n\n"
                                                "<?xml version=\"1.0\"?><b>x <?xml y</b>\r\n");
    ASSERT_EQ(result.error, "");
    ASSERT_EQ(result.documents.size(), 2U);
    EXPECT_EQ(result.documents[0], "<?xml version=\"1.0\"?>\n<a>1\n\n2</a>");
    EXPECT_EQ(result.documents[1], "<?xml version=\"1.0\"?><b>x <?xml y</b>");
}

TEST(sim_replay_file, refuses_texts_that_are_no_list_of_documents)
{
    const std::string declaration = "<?xml version=\"1.0\"?>";
    const struct {
        std::string text;
        const char* error;
    } cases[] = {
        {"", "holds no document"},
        {" \n\n", "holds no document"},
        {"hello", "does not begin with an XML declaration"},
        {"hello\n" + declaration, "does not begin with an XML declaration"},
        {declaration + "<a/>\n" + declaration + std::string(4075, 'x'),
         "document 2 has more than 4095 bytes"},
        {declaration + std::string(1, '\0'), "document 1 holds a NUL byte"},
    };
    for (const auto& row : cases) {
        const auto result = tovrik::split_documents(row.text);
        EXPECT_EQ(result.error, row.error);
        EXPECT_TRUE(result.documents.empty());
    }
}

TEST(sim_replay_file, takes_a_document_of_the_greatest_size)
{
    const std::string declaration = "<?xml version=\"1.0\"?>";
    const auto result = tovrik::split_documents(
        declaration + std::string(tovrik::max_text_bytes - declaration.size(), 'x') + "\n");
    EXPECT_EQ(result.error, "");
}

TEST(sim_replay_file, reads_a_file_and_names_it_in_errors)
{
    const auto folder =
        std::filesystem::temp_directory_path() / ("sim_replay_" + std::to_string(getpid()));
    std::filesystem::create_directory(folder);
    const std::string path = folder / "messages.xml";
    std::FILE* file = std::fopen(path.c_str(), "w");
    ASSERT_NE(file, nullptr);
    std::fputs("<?xml version=\"1.0\"?><a>1</a>\n", file);
    std::fclose(file);

    const auto result = tovrik::read_replay_file(path);
    EXPECT_EQ(result.error, "");
    EXPECT_EQ(result.documents, std::vector<std::string>{"<?xml version=\"1.0\"?><a>1</a>"});

    std::filesystem::resize_file(path, tovrik::max_replay_file_bytes + 1);
    EXPECT_EQ(tovrik::read_replay_file(path).error, path + ": larger than 16777216 bytes");
    EXPECT_EQ(tovrik::read_replay_file(folder).error, folder.string() + ": Is a directory");
    std::filesystem::remove_all(folder);
    EXPECT_EQ(tovrik::read_replay_file(path).error, path + ": No such file or directory");
}

} // namespace
