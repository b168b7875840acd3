// The fatal exits: their writes and their status.
#include "applet/fatal.h"

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

// The single writes of a fatal exit to standard error, and its status.
struct ending {
    std::vector<std::string> writes;
    int status;

    bool operator==(const ending&) const = default;
};

void PrintTo(const ending& shown, std::ostream* stream) {
    *stream << testing::PrintToString(shown.writes) << ", status " << shown.status;
}

template <class Exit>
ending ending_of(const Exit& exit) {
    // With SOCK_SEQPACKET, each write is a separate message.
    int ends[2];
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], STDERR_FILENO);
        close(ends[0]);
        close(ends[1]);
        exit();
        _exit(2);  // exit() returned
    }
    close(ends[1]);
    ending got{};
    char buffer[4096];
    while (const ssize_t count = read(ends[0], buffer, sizeof buffer)) {
        got.writes.emplace_back(buffer, static_cast<std::size_t>(count));
    }
    close(ends[0]);
    waitpid(child, &got.status, 0);
    got.status = WIFEXITED(got.status) ? WEXITSTATUS(got.status) : -1;
    return got;
}

owned_error error_of(const char* message) {
    return owned_error{g_error_new_literal(G_OPTION_ERROR, G_OPTION_ERROR_FAILED, message)};
}

TEST(fatal, of_the_feeder_tool) {
    EXPECT_EQ(ending_of([] { tlm_fatal("a message"); }),
              (ending{{"oru-tlm-tool: ", "a message\n"}, 1}));
    EXPECT_EQ(ending_of([] { tlm_fatal(error_of("a {} message"), nullptr); }),
              (ending{{"oru-tlm-tool: ", "Option parsing failed: a {} message\n"}, 1}));
    EXPECT_EQ(ending_of([] { tlm_fatal(std::runtime_error("a reason")); }),
              (ending{{"oru-tlm-tool: ", "Exception: a reason\n"}, 1}));
}

TEST(fatal, of_the_server_report_tool) {
    EXPECT_EQ(ending_of([] {
                  serverreport_fatal("Failed to get quota: {}", error_of("a %s message").get());
              }),
              (ending{{"oru-serverreport-tool: ", "Failed to get quota: a %s message\n"}, 1}));
}

TEST(fatal, without_an_error) {
    EXPECT_EQ(ending_of([] { tlm_fatal(nullptr, nullptr); }),
              (ending{{"oru-tlm-tool: ", "Option parsing failed: \n"}, 1}));
    EXPECT_EQ(ending_of([] { serverreport_fatal("Failed to get limit: {}", nullptr); }),
              (ending{{"oru-serverreport-tool: ", "Failed to get limit: \n"}, 1}));
}

}  // namespace
