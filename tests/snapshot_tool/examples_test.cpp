// The output of show, graph and metrics for the examples, compared with golden files, which were
// checked line by line when they were made.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "snapshot_tool/oru_snapshot.h"

namespace {

std::string content(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

// Returns the name of an example, relative to the working directory: the output contains it.
std::string example(const std::string& name) {
    std::filesystem::current_path(ORU_EXAMPLES_DIR);
    return name + ".json";
}

// Returns the output with "/dev/stdin" for the name of the example.
std::string of_standard_input(std::string output, const std::string& example) {
    if (const std::size_t begin = output.find(example); begin != std::string::npos) {
        output.replace(begin, example.size(), "/dev/stdin");
    }
    return output;
}

class each_command : public testing::TestWithParam<const char*> {
  public:
    static std::string golden(const std::string& name) {
        return content(std::string(ORU_SNAPSHOT_GOLDEN_DIR) + "/" + name + "." + GetParam() +
                       ".txt");
    }
};

TEST_P(each_command, prints_the_examples) {
    for (const char* name : {"two-input-encoder", "failing-device"}) {
        EXPECT_EQ(oru_snapshot({GetParam(), example(name)}), ended(0, golden(name)));
    }
}

TEST_P(each_command, prints_a_file_instead_of_the_service) {
    command streams{.environment = {"ORU_SNAPSHOT=" + example("failing-device")}};
    EXPECT_EQ(oru_snapshot({GetParam(), example("two-input-encoder")}, streams),
              ended(0, golden("two-input-encoder")));
    streams.stdin_from = example("two-input-encoder");
    EXPECT_EQ(
        oru_snapshot({GetParam(), "-"}, streams),
        ended(0, of_standard_input(golden("two-input-encoder"), example("two-input-encoder"))));
}

INSTANTIATE_TEST_SUITE_P(of_the_three, each_command, testing::Values("show", "graph", "metrics"),
                         [](const auto& info) { return std::string(info.param); });

// The picture in the manual and in the README.
TEST(examples, match_the_picture_in_the_manual) {
    EXPECT_EQ(content(ORU_DOCS_DIR "/two-input-encoder.dot"),
              oru_snapshot({"graph", example("two-input-encoder")}).out);
}

}  // namespace
