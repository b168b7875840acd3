// Standard output and standard error that accept only the first bytes. A run that loses any byte of
// its report must report that and fail, and no run may end by a signal that it causes itself.
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/file_size_limit.h"
#include "support/temp_directory.h"
#include "support/tools.h"

namespace {

constexpr std::size_t stdio_buffer = 4096;

// Returns the distance between the sizes that are tried of a text, in addition to the critical
// sizes.
std::size_t stride_of(const std::string& text) {
    // A sanitized or emulated run takes twenty times as long.
    static const bool is_slow =
        std::getenv("ORU_TEST_SANITIZED") != nullptr || std::getenv("ORU_TEST_EMULATED") != nullptr;
    if (text.size() >= 2000) {
        return is_slow ? 1009 : 61;
    }
    return is_slow ? 41 : text.size() < 300 ? 1 : 7;
}

// Every section prints something, but not much.
const std::string small_snapshot = R"({
    "system": {"caps": {"output": true}},
    "mode": {"info": {"fps": 25}},
    "stream": {"debug": {"identity.a": 1}, "quota": {}, "limit": {},
               "all": [{"id": 1, "info": {}, "settings": {"format": 2}, "debug": {}}]},
    "channel": {"info": {"input.count": 1},
                "all": [{"id": 0, "properties": {"key": "input"}, "info": {},
                         "resolutions": {"available": [[1, 2]]}}]},
    "input": {"all": [{"id": 1, "info": {}}]},
    "output": {"all": [{"id": 0, "info": {}, "settings": {}}]}
})";

std::string content_of(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// A command whose output can be limited.
class tool_run {
  public:
    tool_run(const std::string& tool, const std::vector<std::string>& arguments,
             const std::string& snapshot) {
        what_ = {.executable = program("oru-cgi-applet"),
                 .argv = {tool},
                 .environment = etc_oru_in(directory_.path())};
        what_.argv.insert(what_.argv.end(), arguments.begin(), arguments.end());
        what_.environment.push_back("ORU_SNAPSHOT=" + snapshot);
        // The limit would also apply to the profile of a coverage build.
        what_.environment.emplace_back("LLVM_PROFILE_FILE=/dev/null");
        directory_.write("dsp-assertion", "[1]");
    }

    result plain() const { return run(what_); }

    // Runs with a stream that accepts only the first `bytes`. The result has what it accepted.
    result with_limited(std::string command::* stream, std::string result::* text,
                        std::size_t bytes) const {
        const std::filesystem::path file = std::filesystem::path(directory_.path()) / "accepted";
        std::filesystem::remove(file);
        command what = what_;
        what.*stream = file;
        const file_size_limit limit(bytes);
        result got = run(what);
        got.*text = content_of(file);
        return got;
    }

    const std::string& name() const { return what_.argv[0]; }
    const temp_directory& directory() const { return directory_; }
    const command& what() const { return what_; }

  private:
    temp_directory directory_;
    command what_;
};

// Returns the sizes to try: every size of a short text; of a longer one, those around the ends of
// stdio's buffers and of the report's sections, and some between.
std::set<std::size_t> sizes_of(const std::string& text) {
    std::set<std::size_t> sizes{0, 1, text.size(), text.size() + 1};
    const auto around = [&](std::size_t size) {
        for (const std::size_t each : {size - 1, size, size + 1}) {
            if (each <= text.size()) {
                sizes.insert(each);
            }
        }
    };
    around(text.size());
    for (std::size_t at = 0; at < text.size(); at += stride_of(text)) {
        sizes.insert(at);
    }
    for (std::size_t at = stdio_buffer; at < text.size(); at += stdio_buffer) {
        around(at);
    }
    for (std::size_t at = 0; (at = text.find("----- ", at)) != text.npos; ++at) {
        around(at);
    }
    return sizes;
}

std::string exception_line(const std::string& tool) {
    return tool == "oru-tlm-tool"
               ? "oru-tlm-tool: Exception: cannot write standard output: "
               : "oru-serverreport-tool: Exception cannot write standard output: ";
}

void expect_exception_line(const std::string& tool, const result& got) {
    EXPECT_TRUE(got.err.starts_with(exception_line(tool))) << got;
    EXPECT_EQ(std::ranges::count(got.err, '\n'), 1) << got;
    EXPECT_TRUE(got.err.ends_with('\n')) << got;
}

void expect_every_loss_reported(const tool_run& tool) {
    const result plain = tool.plain();
    ASSERT_EQ(plain.status, 0) << plain;
    ASSERT_EQ(plain.err, "");
    ASSERT_EQ(plain, tool.plain()) << "two runs differ";
    for (const std::size_t size : sizes_of(plain.out)) {
        SCOPED_TRACE(size);
        const result got = tool.with_limited(&command::stdout_to, &result::out, size);
        ASSERT_EQ(got.signal, 0) << got;
        if (size >= plain.out.size()) {
            ASSERT_EQ(got, plain);
            continue;
        }
        ASSERT_EQ(got.status, 1) << got;
        ASSERT_EQ(got.out, plain.out.substr(0, size));
        expect_exception_line(tool.name(), got);
    }
}

std::string name_of(const testing::TestParamInfo<tool_and_switch>& info) {
    const auto& [tool, switch_name] = info.param;
    std::string name = tool + switch_name;
    std::erase_if(name, [](char c) { return c == '-'; });
    return name;
}

class each_switch : public testing::TestWithParam<tool_and_switch> {};

TEST_P(each_switch, reports_lost_bytes_of_a_short_report) {
    const auto& [tool, switch_name] = GetParam();
    const temp_directory scratch;
    expect_every_loss_reported(
        tool_run(tool, {switch_name}, scratch.write("snapshot.json", small_snapshot)));
}

class each_report : public testing::TestWithParam<tool_and_switch> {};

TEST_P(each_report, reports_lost_bytes_of_an_example) {
    const auto& [tool, switch_name] = GetParam();
    expect_every_loss_reported(
        tool_run(tool, {switch_name}, ORU_EXAMPLES_DIR "/two-input-encoder.json"));
}

// SIGPIPE ends the tool like any program of a pipeline. If it is ignored, the lost report is
// reported like any other.
TEST_P(each_switch, writes_to_a_pipe_without_reader) {
    const auto& [tool, switch_name] = GetParam();
    const temp_directory scratch;
    const tool_run run_on(tool, {switch_name}, scratch.write("snapshot.json", small_snapshot));
    constexpr int inherited = 9;
    ASSERT_EQ(fcntl(inherited, F_GETFD), -1);
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    ASSERT_EQ(dup2(ends[1], inherited), inherited);
    close(ends[0]);
    close(ends[1]);
    command through_shell = run_on.what();
    through_shell.executable = "/bin/sh";
    through_shell.argv = {"sh", "-c", R"(exec "$@" >&9 9>&-)", "sh", program(tool), switch_name};

    const result killed = run(through_shell);
    signal(SIGPIPE, SIG_IGN);
    const result ignored = run(through_shell);
    signal(SIGPIPE, SIG_DFL);
    close(inherited);

    EXPECT_EQ(killed.signal, SIGPIPE) << killed;
    EXPECT_EQ(killed.err, "");
    EXPECT_EQ(ignored.status, 1) << ignored;
    expect_exception_line(tool, ignored);
}

// A section that does not print through GLib, which would drop the reason.
TEST(writes, the_reason_is_that_of_the_system) {
    const temp_directory scratch;
    const tool_run tool("oru-tlm-tool", {"-q"}, scratch.write("snapshot.json", "{}"));
    const std::string start = "oru-tlm-tool: Exception: cannot write standard output: ";
    EXPECT_EQ(tool.with_limited(&command::stdout_to, &result::out, 10),
              ended(1, "MaxBufferB", start + "File too large\n"));
    for (const auto& [stream, reason] :
         {std::pair<std::string, std::string>{"/dev/full", "No space left on device"},
          {closed_stream, "Bad file descriptor"}}) {
        command what = tool.what();
        what.stdout_to = stream;
        EXPECT_EQ(run(what), ended(1, "", start + reason + "\n"));
    }
}

// Returns `item` for each number from 1 to 500, with the number instead of #.
std::string five_hundred(std::string_view item) {
    std::string items;
    for (int number = 1; number <= 500; ++number) {
        items += number > 1 ? "," : "";
        for (const char c : item) {
            items += c == '#' ? std::to_string(number) : std::string(1, c);
        }
    }
    return items;
}

// Sections that are longer than the buffer of stdio, so that a write fails in the middle of each,
// and a line that GLib writes, which does not report the failure.
TEST(writes, to_a_device_that_is_full) {
    const std::string streams = R"({"stream":{"debug":{)" + five_hundred(R"("identity.#":1)") +
                                R"(},"quota":{},"limit":{},"all":[)" +
                                five_hundred(R"({"id":#,"info":{},"settings":{},"debug":{}})") +
                                "]}}";
    const std::string channels =
        R"({"channel":{"all":[)" +
        five_hundred(
            R"({"id":#,"properties":{"key":"input"},"info":{},"resolutions":{"available":[[1,2]]}})") +
        R"(]},"input":{"all":[)" + five_hundred(R"({"id":#,"info":{}})") +
        R"(]},"mode":{"info":{)" + five_hundred(R"("a_long_name_of_a_value.#":1)") + "}}}";
    const temp_directory scratch;
    const std::string on_streams = scratch.write("streams.json", streams);
    const std::string on_channels = scratch.write("channels.json", channels);
    const std::string on_nothing = scratch.write("nothing.json", "{}");
    for (const auto& [tool, switch_name, snapshot] : {
             std::tuple{"oru-serverreport-tool", "-lqocrai", on_streams},
             {"oru-serverreport-tool", "-c", on_channels},
             {"oru-serverreport-tool", "-a", on_channels},
             {"oru-serverreport-tool", "-i", on_channels},
             {"oru-tlm-tool", "-s", on_channels},
             {"oru-tlm-tool", "-i", on_streams},
             {"oru-serverreport-tool", "-c", on_nothing},
             {"oru-serverreport-tool", "-i", on_nothing},
         }) {
        SCOPED_TRACE(std::string(tool) + " " + switch_name);
        const tool_run section(tool, {switch_name}, snapshot);
        const result plain = section.plain();
        EXPECT_EQ(plain.status, 0) << plain.err;
        EXPECT_TRUE(snapshot == on_nothing || plain.out.size() > stdio_buffer + 100);
        command what = section.what();
        what.stdout_to = "/dev/full";
        const result got = run(what);
        EXPECT_EQ(got.status, 1) << got;
        expect_exception_line(tool, got);
        // What fits is whole buffers: the statement whose output fills the next one fails.
        const std::size_t end = std::min(plain.out.size(), 4 * stdio_buffer);
        for (std::size_t size = stdio_buffer; size < end; size += stdio_buffer) {
            const result cut = section.with_limited(&command::stdout_to, &result::out, size);
            EXPECT_EQ(cut.status, 1) << cut.err;
            expect_exception_line(tool, cut);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(writes, each_switch,
                         testing::ValuesIn(every_switch_and({{"oru-tlm-tool", "--help"},
                                                             {"oru-serverreport-tool", "--help"}})),
                         name_of);
INSTANTIATE_TEST_SUITE_P(
    writes, each_report,
    testing::ValuesIn(every_switch_and({{"oru-serverreport-tool", "-lqocrai"}})), name_of);

// A run that writes to standard error. Its status is the same if that output is lost.
struct failing_run {
    const char* name;
    const char* tool;
    std::vector<std::string> arguments;
    const char* snapshot;
    const char* record;  // of earlier assertions; NULL: a directory instead
    int status;
};

std::ostream& operator<<(std::ostream& stream, const failing_run& shown) {
    return stream << shown.name;
}

const std::vector<failing_run> failing_runs = {
    {"unknown_option_of_the_feeder", "oru-tlm-tool", {"--foo"}, "{}", "", 1},
    {"unknown_option_of_the_report", "oru-serverreport-tool", {"--foo"}, "{}", "", 1},
    {"unknown_name", "oru-other-tool", {}, "{}", "", 1},
    {"exception",
     "oru-tlm-tool",
     {"-qs"},
     R"({"mode": {"info": {"a": {"double": "nan"}}}})",
     "",
     1},
    {"fatal_streams", "oru-serverreport-tool", {"-l"}, "{}", "[1]", 1},
    {"fatal_quota", "oru-serverreport-tool", {"-q"}, "{}", "[1]", 1},
    {"fatal_output",
     "oru-serverreport-tool",
     {"-o"},
     R"({"system": {"caps": {"output": true}}})",
     "[1]",
     1},
    {"unreadable_record",
     "oru-serverreport-tool",
     {"-c"},
     R"({"channel": {"all": []}})",
     nullptr,
     0},
};

class each_failure : public testing::TestWithParam<failing_run> {};

TEST_P(each_failure, keeps_its_status_if_standard_error_is_lost) {
    const failing_run& failing = GetParam();
    const temp_directory scratch;
    tool_run tool(failing.tool, failing.arguments,
                  scratch.write("snapshot.json", failing.snapshot));
    const auto record = std::filesystem::path(tool.directory().path()) / "dsp-assertion";
    std::filesystem::remove(record);
    if (failing.record == nullptr) {
        std::filesystem::create_directory(record);
    } else {
        tool.directory().write("dsp-assertion", failing.record);
    }
    const result plain = tool.plain();
    ASSERT_EQ(plain.status, failing.status) << plain;
    ASSERT_NE(plain.err, "");
    for (const std::size_t size : sizes_of(plain.err)) {
        SCOPED_TRACE(size);
        const result got = tool.with_limited(&command::stderr_to, &result::err, size);
        EXPECT_EQ(got.signal, 0);
        EXPECT_EQ(got.err, plain.err.substr(0, size));
        if (plain.status == 0 && size < plain.err.size()) {
            // The report continues after this error line, so losing the line is an exception.
            EXPECT_EQ(got.status, 1);
            EXPECT_EQ(got.out, "");
        } else {
            EXPECT_EQ(got.status, plain.status);
            EXPECT_EQ(got.out, plain.out);
        }
    }
}

// If a report is lost, the status is 1, even if standard error is lost too.
TEST_P(each_failure, with_both_streams_limited) {
    const failing_run& failing = GetParam();
    const temp_directory scratch;
    const tool_run tool(failing.tool, failing.arguments,
                        scratch.write("snapshot.json", failing.snapshot));
    const result plain = tool.plain();
    command what = tool.what();
    what.stdout_to = tool.directory().path() + "/out";
    what.stderr_to = tool.directory().path() + "/err";
    for (const std::size_t size :
         sizes_of(plain.out.size() > plain.err.size() ? plain.out : plain.err)) {
        SCOPED_TRACE(size);
        std::filesystem::remove(what.stdout_to);
        std::filesystem::remove(what.stderr_to);
        const file_size_limit limit(size);
        const result got = run(what);
        EXPECT_EQ(got.signal, 0);
        EXPECT_EQ(got.status, size < plain.out.size() ? 1 : plain.status);
        EXPECT_EQ(content_of(what.stdout_to), plain.out.substr(0, size));
    }
}

INSTANTIATE_TEST_SUITE_P(writes, each_failure, testing::ValuesIn(failing_runs),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

}  // namespace
