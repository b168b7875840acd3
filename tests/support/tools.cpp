#include "support/tools.h"

#include <cstdlib>
#include <format>

#include "support/temp_directory.h"

std::string program(std::string_view name) {
    const char* bin_dir = std::getenv("ORU_TEST_BIN_DIR");
    return std::format("{}/{}", bin_dir != nullptr ? bin_dir : ORU_BIN_DIR, name);
}

std::vector<std::string> etc_oru_in(std::string_view directory) {
    // A shared sanitizer runtime refuses to run if another library is loaded before it. The library
    // that is preloaded here intercepts none of its functions.
    const char* asan_options = std::getenv("ASAN_OPTIONS");
    std::string asan = asan_options != nullptr ? std::string(asan_options) + ":" : std::string();
    return {"LD_PRELOAD=" ORU_REDIRECT_ETC_ORU, "ORU_TEST_ETC=" + std::string(directory),
            "ASAN_OPTIONS=" + asan + "verify_asan_link_order=0"};
}

namespace {

result run_tool(std::string_view name, std::string_view snapshot,
                const std::vector<std::string>& arguments, const run_options& options) {
    const temp_directory scratch;
    if (options.assertions) {
        scratch.write("dsp-assertion", *options.assertions);
    }
    command what{.executable = program(name),
                 .argv = {program(name)},
                 .environment = etc_oru_in(scratch.path()),
                 .stdout_to = options.stdout_to,
                 .stderr_to = options.stderr_to};
    what.argv.insert(what.argv.end(), arguments.begin(), arguments.end());
    what.environment.push_back("ORU_SNAPSHOT=" + scratch.write("snapshot.json", snapshot));
    what.environment.insert(what.environment.end(), options.environment.begin(),
                            options.environment.end());
    return run(what);
}

}  // namespace

result tlm(std::string_view snapshot, const std::vector<std::string>& arguments,
           const run_options& options) {
    return run_tool("oru-tlm-tool", snapshot, arguments, options);
}

result report(std::string_view snapshot, const std::vector<std::string>& arguments,
              const run_options& options) {
    return run_tool("oru-serverreport-tool", snapshot, arguments, options);
}

std::vector<tool_and_switch> every_switch_and(const std::vector<tool_and_switch>& extra) {
    std::vector<tool_and_switch> all;
    for (const char* each : {"-q", "-s", "-i", "-qsi"}) {
        all.emplace_back("oru-tlm-tool", each);
    }
    for (const char* each : {"-l", "-q", "-o", "-c", "-r", "-a", "-i"}) {
        all.emplace_back("oru-serverreport-tool", each);
    }
    all.insert(all.end(), extra.begin(), extra.end());
    return all;
}
