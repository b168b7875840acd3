// Where the client looks for its snapshot, and how it reads what is there.
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "support/run.h"
#include "support/temp_directory.h"
#include "support/tools.h"

namespace {

// --- The place ----------------------------------------------------------------------------------

// Who may start a program with more rights than they have does not choose what it reads.
TEST(place, the_environment_names_none_to_a_program_with_more_rights) {
    const temp_directory scratch;
    struct statvfs system{};
    ASSERT_EQ(statvfs(scratch.path().c_str(), &system), 0);
    if (geteuid() != 0 || (system.f_flag & ST_NOSUID) != 0) {
        GTEST_SKIP() << "only root can make such a program, and not on every file system";
    }
    const std::string copy = scratch.path() + "/oru-tlm-tool";
    std::filesystem::copy_file(program("oru-tlm-tool"), copy);
    const std::string snapshot =
        scratch.write("snapshot.json", R"({"stream": {"debug": {"global.capacity.peak": 7}}})");
    const command what{.executable = copy,
                       .argv = {"oru-tlm-tool", "-q"},
                       .environment = {"ORU_SNAPSHOT=" + snapshot}};
    ASSERT_TRUE(run(what).out.starts_with("MaxBufferBytes=7\n"));

    ASSERT_EQ(chmod(scratch.path().c_str(), 0755), 0);
    ASSERT_EQ(chown(copy.c_str(), 65534, 65534), 0);
    ASSERT_EQ(chmod(copy.c_str(), 04755), 0);
    EXPECT_FALSE(run(what).out.starts_with("MaxBufferBytes=7\n"));
}

}  // namespace
