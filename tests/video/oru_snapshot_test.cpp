#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <format>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "video/snapshot_file.h"

namespace {

constexpr auto usage =
    "Usage: oru-snapshot check FILE...\n"
    "       oru-snapshot --help | --version\n";

std::string content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

struct outcome {
    int status;
    std::string out;
    std::string err;

    bool operator==(const outcome&) const = default;
};

void PrintTo(const outcome& is, std::ostream* to) {
    *to << std::format("status {}\nout: {}\nerr: {}", is.status, is.out, is.err);
}

// Runs oru-snapshot; its standard output goes to `out`, or is closed when that is empty.
outcome run(std::vector<std::string> arguments, const std::string& out = "file") {
    const snapshot_file place;
    const std::string out_path = out == "file" ? (place.directory() / "out").string() : out;
    const std::string err_path = place.directory() / "err";
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (out.empty()) {
        posix_spawn_file_actions_addclose(&actions, STDOUT_FILENO);
    } else {
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out_path.c_str(),
                                         O_WRONLY | O_CREAT, 0600);
    }
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, err_path.c_str(), O_WRONLY | O_CREAT,
                                     0600);
    arguments.insert(arguments.begin(), "oru-snapshot");
    std::vector<char*> argv;
    for (auto& argument : arguments) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    pid_t child = 0;
    const int spawned =
        posix_spawn(&child, ORU_SNAPSHOT_TOOL, &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    EXPECT_EQ(spawned, 0);
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, out == "file" ? content(out_path) : "",
            content(err_path)};
}

TEST(OruSnapshot, ChecksEveryFile) {
    const snapshot_file good("{}");
    const snapshot_file bad("{\n \"info\": 1}");
    const std::string ok = good.path() + ": ok\n";
    const std::string wrong = bad.path() + ":2:2: unknown member 'info'\n";
    EXPECT_EQ(run({"check", good.path()}), (outcome{0, ok, ""}));
    EXPECT_EQ(run({"check", bad.path()}), (outcome{1, "", wrong}));
    EXPECT_EQ(run({"check", bad.path(), good.path(), "/nowhere", good.path()}),
              (outcome{1, ok + ok, wrong + "/nowhere: No such file or directory\n"}));
    EXPECT_EQ(run({"check", ""}), (outcome{1, "", ": No such file or directory\n"}));
    EXPECT_EQ(run({"check", "--help"}), (outcome{1, "", "--help: No such file or directory\n"}));
}

TEST(OruSnapshot, SaysHowItIsUsed) {
    EXPECT_EQ(run({"--help"}), (outcome{0, usage, ""}));
    EXPECT_EQ(run({"--version"}), (outcome{0, "oru-snapshot " ORU_VERSION "\n", ""}));
    EXPECT_EQ(run({}), (outcome{2, "", usage}));
    EXPECT_EQ(run({"check"}), (outcome{2, "", usage}));
    EXPECT_EQ(run({"verify", "x"}), (outcome{2, "", usage}));
    EXPECT_EQ(run({""}), (outcome{2, "", usage}));
    EXPECT_EQ(run({"--help", "x"}), (outcome{2, "", usage}));
    EXPECT_EQ(run({"--version", "x"}), (outcome{2, "", usage}));
}

TEST(OruSnapshot, SaysWhenItsOutputIsLost) {
    const snapshot_file good("{}");
    const snapshot_file bad("");
    const std::vector<std::vector<std::string>> commands{
        {"check", good.path()}, {"--help"}, {"--version"}};
    for (const auto& command : commands) {
        EXPECT_EQ(run(command, "/dev/full"),
                  (outcome{1, "",
                           "oru-snapshot: cannot write to standard output: "
                           "No space left on device\n"}));
        EXPECT_EQ(run(command, ""), (outcome{1, "",
                                             "oru-snapshot: cannot write to standard output: "
                                             "Bad file descriptor\n"}));
    }
    // Nothing was to be written there.
    EXPECT_EQ(run({"check", bad.path()}, "/dev/full"),
              (outcome{1, "", bad.path() + ": the file is empty\n"}));
}

TEST(OruSnapshot, FindsNothingWrongWithTheExamples) {
    std::vector<std::string> command{"check"};
    std::string expected;
    for (const auto& file : std::filesystem::directory_iterator(ORU_EXAMPLES)) {
        if (file.path().extension() == ".json") {
            command.push_back(file.path());
            expected += file.path().string() + ": ok\n";
        }
    }
    EXPECT_GE(command.size(), 3U);
    EXPECT_EQ(run(command), (outcome{0, expected, ""}));
}

}  // namespace
