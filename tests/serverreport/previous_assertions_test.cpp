// The record of earlier signal-processor assertions at the head of every report.
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <ctime>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/temp_directory.h"
#include "support/tools.h"

namespace {

const std::string header = "----- Previous DSP assertions -----\n\n";
const std::string unreadable = "Failed reading '/etc/oru/dsp-assertion': file_open_failure\n";

result report_on(const std::string& record) {
    return report("{}", {}, {.assertions = record});
}

// Runs the tool with /etc/oru redirected to `etc`.
result report_in(const std::string& etc, const std::vector<std::string>& environment = {}) {
    command what{.executable = program("oru-serverreport-tool"),
                 .argv = {"oru-serverreport-tool"},
                 .environment = etc_oru_in(etc)};
    what.environment.insert(what.environment.end(), environment.begin(), environment.end());
    return run(what);
}

TEST(previous_assertions, no_record_no_section) {
    EXPECT_EQ(report("{}", {}), ended(0, ""));
    const temp_directory directory;
    EXPECT_EQ(report_in(directory.path() + "/none"), ended(0, ""));
    // Links without a target and paths below a file are not records.
    std::filesystem::create_symlink("nowhere", directory.path() + "/dsp-assertion");
    EXPECT_EQ(report_in(directory.path()), ended(0, ""));
    const temp_directory circle;
    std::filesystem::create_symlink("dsp-assertion", circle.path() + "/dsp-assertion");
    EXPECT_EQ(report_in(circle.path()), ended(0, ""));
    EXPECT_EQ(report_in(directory.write("file", "") + "/below"), ended(0, ""));
}

TEST(previous_assertions, a_record_in_a_folder_without_search_permission_is_ignored) {
    const temp_directory directory;
    directory.write("dsp-assertion", "{}");
    chmod(directory.path().c_str(), 0600);
    const result got = report_in(directory.path());
    chmod(directory.path().c_str(), 0700);
    EXPECT_EQ(got, ended(0, ""));
}

TEST(previous_assertions, an_empty_record) {
    EXPECT_EQ(report_on(""), ended(0, header + "\n\n"));
}

TEST(previous_assertions, a_record_is_printed_on_one_line) {
    EXPECT_EQ(report_on(R"({
    "assertion" : "ptr != NULL",
	"line": 120,
    "stack": [ 1.50e+3, -0, 1E5,
               true , false, null ],
    "nested": { "b" : { }, "a" : [ ] },
    "b": 1, "a": 2, "b": 3
}
)"),
              ended(0, header + R"({"assertion":"ptr != NULL","line":120,)" +
                           R"("stack":[1.50e+3,-0,1E5,true,false,null],)" +
                           R"("nested":{"b":{},"a":[]},"b":1,"a":2,"b":3})" + "\n\n"));
    EXPECT_EQ(report_on("\t[\t1 ,\t2 ]\t"), ended(0, header + "[1,2]\n\n"));
    EXPECT_EQ(report_on("{\r\n  \"a\": 1\r\n}\r\n"), ended(0, header + "{\"a\":1}\n\n"));
    EXPECT_EQ(report_on("{\"a\":1}"), ended(0, header + "{\"a\":1}\n\n"));
    EXPECT_EQ(report_on(" \"just a text\" "), ended(0, header + "\"just a text\"\n\n"));
    EXPECT_EQ(report_on(" 12 "), ended(0, header + "12\n\n"));
}

TEST(previous_assertions, texts_keep_their_blanks) {
    EXPECT_EQ(
        report_on(R"({ "a  b" : " \" // no comment \\" , "c" : "/* nor this */ é \u00e9 \/" })"),
        ended(0, header + R"({"a  b":" \" // no comment \\","c":"/* nor this */ é \u00e9 \/"})" +
                     "\n\n"));
}

TEST(previous_assertions, comments_are_removed) {
    EXPECT_EQ(report_on("// written by the kernel\n{ \"a\": /* first */ 1, // second\n"
                        "  \"b\": [ 2 /* third // */ ] /**/\n}\n/* the end * / \" */\n"),
              ended(0, header + "{\"a\":1,\"b\":[2]}\n\n"));
    EXPECT_EQ(report_on("[1] // the end"), ended(0, header + "[1]\n\n"));
}

TEST(previous_assertions, a_record_that_is_not_json_is_printed_unchanged) {
    for (const char* record :
         {"{ \"assertion\": \"ptr != NU", "{ \"a\" : [ 1 , 2", "assertion failed: ptr != NULL\n",
          "{ \"a\": 1 } }", "[ 1 2 ]\n", "{ \"a\": nul }", "[1, 2] // cut short\n[ 3",
          "[ /* cut short", "{ a : 1 }", "%s {} \x01 \x7f"}) {
        EXPECT_EQ(report_on(record), ended(0, header + record + "\n\n")) << record;
    }
}

// A comment counts as a blank: removing it must not join two tokens.
TEST(previous_assertions, a_record_without_a_value_or_a_comma_is_printed_unchanged) {
    for (const char* record :
         {" ", "\n\t\r\n", "// nothing\n", "/* a */ // b", "[1/**/2]", "[true/* or */false]",
          "[1/**/2, 3]", "\"a\"/**/\"b\"", "{\"a\":1/**/\"b\":2}"}) {
        EXPECT_EQ(report_on(record), ended(0, header + record + "\n\n")) << record;
    }
    EXPECT_EQ(report_on("[1/**/,/**/2]"), ended(0, header + "[1,2]\n\n"));
}

// The JSON library rejects deeper nesting and half a pair of surrogates.
TEST(previous_assertions, a_record_that_the_library_rejects_is_printed_unchanged) {
    const auto nested = [](std::size_t levels) {
        return std::string(levels, '[') + " 1 " + std::string(levels, ']');
    };
    EXPECT_EQ(report_on(nested(256)),
              ended(0, header + std::string(256, '[') + "1" + std::string(256, ']') + "\n\n"));
    EXPECT_EQ(report_on(nested(257)), ended(0, header + nested(257) + "\n\n"));
    EXPECT_EQ(report_on(R"([ "\ud83d\ude00" ])"), ended(0, header + R"(["\ud83d\ude00"])"
                                                                    "\n\n"));
    EXPECT_EQ(report_on(R"([ "\ud83d" ])"), ended(0, header + R"([ "\ud83d" ])"
                                                              "\n\n"));
}

TEST(previous_assertions, a_large_record) {
    std::string record = "[\n";
    std::string expected = "[";
    for (int i = 0; i < 100000; ++i) {
        record += (i == 0 ? "  { \"line\" : " : ",\n  { \"line\" : ") + std::to_string(i) + " }";
        expected += (i == 0 ? "{\"line\":" : ",{\"line\":") + std::to_string(i) + "}";
    }
    EXPECT_EQ(report_on(record + "\n]\n"), ended(0, header + expected + "]\n\n"));
}

TEST(previous_assertions, a_record_that_cannot_be_read) {
    const temp_directory directory;
    const std::string path = directory.write("dsp-assertion", "{}");
    chmod(path.c_str(), 0);
    EXPECT_EQ(report_in(directory.path()), ended(0, header + "\n\n", unreadable));
}

TEST(previous_assertions, nothing_is_printed_of_a_record_whose_read_fails) {
    const temp_directory directory;
    directory.write("dsp-assertion", "[1, 2, 3, 4, 5, 6, 7, 8]");
    for (const char* bytes : {"0", "1", "12", "23"}) {
        EXPECT_EQ(report_in(directory.path(), {std::string("ORU_TEST_READ_FAILS=") + bytes}),
                  ended(0, header + "\n\n", unreadable))
            << bytes;
    }
}

TEST(previous_assertions, a_directory_instead_of_a_record) {
    const temp_directory directory;
    std::filesystem::create_directory(directory.path() + "/dsp-assertion");
    EXPECT_EQ(report_in(directory.path()), ended(0, header + "\n\n", unreadable));
}

TEST(previous_assertions, a_queue_instead_of_a_record_does_not_block) {
    const temp_directory directory;
    ASSERT_EQ(mkfifo((directory.path() + "/dsp-assertion").c_str(), 0600), 0);
    EXPECT_EQ(report_in(directory.path()), ended(0, header + "\n\n", unreadable));
}

// With 32-bit sizes and dates, a record beyond them exists but cannot be read.
TEST(previous_assertions, a_record_of_a_late_date) {
    const temp_directory directory;
    const std::string path = directory.write("dsp-assertion", "{ }");
    ASSERT_EQ(run({.executable = "/usr/bin/touch", .argv = {"touch", "--date=@4294967296", path}}),
              ended(0, ""));
    EXPECT_EQ(report_in(directory.path()), sizeof(time_t) == 4
                                               ? ended(0, header + "\n\n", unreadable)
                                               : ended(0, header + "{}\n\n"));
}

#if SIZE_MAX == UINT32_MAX
TEST(previous_assertions, a_record_beyond_the_memory) {
    const temp_directory directory;
    const std::string path = directory.write("dsp-assertion", "{}");
    ASSERT_EQ(truncate(path.c_str(), 4294967298), 0);  // 2 if truncated to 32 bits
    EXPECT_EQ(report_in(directory.path()), ended(0, header + "\n\n", unreadable));
}
#endif

TEST(previous_assertions, memory_that_runs_out_is_an_exception_of_the_tool) {
    const temp_directory directory;
    directory.write("dsp-assertion", std::string(200000, ' '));
    command what{.executable = program("oru-serverreport-tool"),
                 .argv = {"oru-serverreport-tool"},
                 .environment = etc_oru_in(directory.path())};
    what.environment[0] += ":" ORU_LIMIT_MALLOC;
    what.environment.emplace_back("ORU_TEST_MALLOC_LIMIT=110000");
    EXPECT_EQ(run(what), ended(1, "", "oru-serverreport-tool: Exception std::bad_alloc\n"));
}

// A lost line on standard error is an exception like one on standard output.
TEST(previous_assertions, a_lost_error_line_ends_the_run) {
    const temp_directory directory;
    std::filesystem::create_directory(directory.path() + "/dsp-assertion");
    for (const std::string& to : unwritable) {
        EXPECT_EQ(run({.executable = program("oru-serverreport-tool"),
                       .argv = {"oru-serverreport-tool"},
                       .environment = etc_oru_in(directory.path()),
                       .stderr_to = to}),
                  ended(1, ""))
            << to;
    }
}

}  // namespace
