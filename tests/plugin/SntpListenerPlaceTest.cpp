// Something other than a named pipe is at the pipe's path. The listener does not open it, and tries
// again each second.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <string>

#include "plugin/ListenerFixtures.h"
#include "support/OpenWatch.h"

namespace {

namespace fs = std::filesystem;
using plugin::ListenerNotStarted;
using testing::ElementsAre;

std::string place() {
  return support::ListenerPipe::path();
}

void putFile() {
  std::ofstream(place(), std::ios::binary) << support::ListenerPipe::bytesOf(6) << "and more";
}

void putSocket() {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  place().copy(address.sun_path, sizeof address.sun_path - 1);
  const int listening = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  ASSERT_EQ(bind(listening, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  close(listening);
}

// Renames in one step, so that the path always exists.
void putPipe() {
  const std::string next = place() + ".new";
  fs::remove(next);
  ASSERT_EQ(mkfifo(next.c_str(), 0600), 0);
  if (fs::is_directory(fs::symlink_status(place()))) fs::remove(place());
  fs::rename(next, place());
}

struct NoPipe {
  const char* name;
  std::function<void()> put;
};

class ListenerWithoutAPipe : public ListenerNotStarted, public testing::WithParamInterface<NoPipe> {
 protected:
  const std::string complaint = "Cannot open " + place() + ": Not a named pipe\n";
};

TEST_P(ListenerWithoutAPipe, TriesAgainEachSecondUntilThereIsOne) {
  support::removeReportPipe();
  GetParam().put();
  // Other processes may open the target of a link.
  std::optional<support::OpenWatch> watch;
  if (!fs::is_symlink(place())) watch.emplace(place());
  listener->start();
  ASSERT_TRUE(log.waitForPart(complaint));
  EXPECT_TRUE(log.has(2, complaint));
  EXPECT_FALSE(log.hasPart("Read failed"));
  EXPECT_FALSE(watch && watch->sees());
  EXPECT_THAT(reports.first(0), testing::IsEmpty());
  putPipe();
  pipe.report(7);
  EXPECT_THAT(reports.first(1), ElementsAre(7));
  EXPECT_THAT(plugin::sleeps(), ElementsAre(1));
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, ListenerWithoutAPipe,
    testing::Values(NoPipe{"File", putFile}, NoPipe{"Socket", putSocket},
                    NoPipe{"Folder", [] { fs::create_directory(place()); }},
                    NoPipe{"LinkToAFolder", [] { fs::create_directory_symlink(".", place()); }},
                    NoPipe{"LinkToADevice", [] { fs::create_symlink("/dev/zero", place()); }}),
    [](const auto& row) { return row.param.name; });

// The file appears between the check of the path and the open.
TEST_F(ListenerNotStarted, ReadsNothingFromAFileThatReplacesThePipe) {
  plugin::afterStat([] {
    plugin::afterStat(nullptr);
    support::removeReportPipe();
    putFile();
  });
  listener->start();
  ASSERT_TRUE(log.waitForPart("Not a named pipe"));
  EXPECT_THAT(support::descriptorFlagsOf(place()), testing::IsEmpty());
  putPipe();
  pipe.report(7);
  EXPECT_THAT(reports.first(1), ElementsAre(7));
}

// A terminal may stand at the pipe's path.
TEST_F(ListenerNotStarted, OpensNothingThatCouldBecomeItsControllingTerminal) {
  listener->start();
  pipe.report(7);
  EXPECT_THAT(reports.first(1), ElementsAre(7));
  end();
  EXPECT_EQ(plugin::opensWithoutNoctty(), 0);
}

}  // namespace
