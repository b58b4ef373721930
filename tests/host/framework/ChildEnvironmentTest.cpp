// Which program a child runs, and its environment and descriptors.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>

#include "host/framework/ChildProcess.h"
#include "support/LogCapture.h"

namespace {

TEST_F(ChildProcess, RunsTheMappedProgram) {
  host::ProgramMap::instance().set("/sbin/of-the-device", "/bin/sh");
  const auto child = process({"/sbin/of-the-device", "-c", "echo $0 >'" + pipePath() + "'"});
  EXPECT_GT(child->launch(), 0);
  EXPECT_EQ(output(), "/sbin/of-the-device\n") << "the name is not mapped";
}

TEST_F(ChildProcess, InheritsItsChannelAndNoOtherDescriptor) {
  std::array<int, 2> ends{};
  ASSERT_EQ(::pipe(ends.data()), 0);  // without close-on-exec
  const host::Descriptor read(ends[0]);
  const host::Descriptor written(ends[1]);
  host::ProgramMap::instance().giveChannel(
      "/bin/sh", [&] { return host::Descriptor(::fcntl(written.get(), F_DUPFD_CLOEXEC, 0)); });
  EXPECT_EQ(outputOf("echo set >&3; echo $CLOCKHOST_CLOCK_FD; "
                     "for n in 0 1 2 3 4 5 6 7 8 9; do [ -e /proc/$$/fd/$n ] && echo $n; done",
                     {"CLOCKHOST_CLOCK_FD=77"}),
            "3\n0\n1\n2\n3\n");
  std::array<char, 8> bytes{};
  EXPECT_EQ(::read(read.get(), bytes.data(), bytes.size()), 4);
}

TEST_F(ChildProcess, DoesNotStartWithoutItsChannel) {
  host::ProgramMap::instance().giveChannel("/bin/sh", [] {
    errno = EMFILE;
    return host::Descriptor();
  });
  EXPECT_LE(shell("exit")->launch(), 0);
}

// A mapped program gets the whole environment, a stand-in only the variables that it uses.
TEST_F(ChildProcess, GetsOnlyItsVariablesIfItIsAStandIn) {
  const Texts given = {"HOME=/root",           "CLOCKHOST_PIPE=p", "NTPCLIENT_PORT=1",
                       "NTPCLIENT_RETRY_MS=2", "TZ=UTC0",          "CLOCKHOST_PIPES=x",
                       "CLOCKHOST_CLOCK_FD=9"};
  const std::string script = "tr '\\0' ' ' </proc/$$/environ >'" + pipePath() + "'";
  std::filesystem::create_symlink("/bin/sh", m_folder / "client");
  host::ProgramMap::instance().setStandInFolder(m_folder.path());
  const auto standIn = process({"/sbin/client", "-c", script}, given);
  EXPECT_GT(standIn->launch(), 0);
  EXPECT_EQ(output(), "CLOCKHOST_PIPE=p NTPCLIENT_PORT=1 NTPCLIENT_RETRY_MS=2 ");
  host::ProgramMap::instance().set("/sbin/client", "/bin/sh");
  const auto named = process({"/sbin/client", "-c", script}, given);
  EXPECT_GT(named->launch(), 0);
  EXPECT_EQ(output(),
            "HOME=/root CLOCKHOST_PIPE=p NTPCLIENT_PORT=1 NTPCLIENT_RETRY_MS=2 TZ=UTC0 "
            "CLOCKHOST_PIPES=x ");
}

TEST_F(ChildProcess, IsNotAProgramOfThisMachineUnlessAllowed) {
  host::ProgramMap::instance().clear();
  const support::LogCapture log;
  const std::string mark = m_folder / "started";
  EXPECT_EQ(process({"/bin/sh", "-c", ": >'" + mark + "'"})->launch(), 0);
  EXPECT_FALSE(std::filesystem::exists(mark));
  EXPECT_EQ(log.count("cannot start \"/bin/sh\": there is no stand-in for it; "
                      "name a program with --program"),
            1U)
      << log.text();
}

}  // namespace
