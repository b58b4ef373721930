#include "faults/FaultPoints.h"

#include <cerrno>

namespace faults {
namespace {

constexpr const char* kStore = "store \"[^\"]*\"";
constexpr const char* kScript = "storage \"setupTZ.sh\" cannot be ";
// A client of the time server has a thread that waits for its end.
constexpr const char* kThread =
    "cannot start (\"|the )|no thread for it|Thread couldn't be started";

// clang-format off
constexpr FaultPoint kPoints[] = {
    {"store open",      Call::storeOpen,      EMFILE, kStore},
    {"store read",      Call::storeRead,      EIO,    kStore},
    {"store write",     Call::storeWrite,     ENOSPC, kStore},
    {"store sync",      Call::storeSync,      EIO,    kStore},
    {"script open",     Call::scriptOpen,     EMFILE, kScript},
    {"script write",    Call::scriptWrite,    ENOSPC, kScript},
    {"script sync",     Call::scriptSync,     EIO,    kScript},
    {"script rename",   Call::scriptRename,   EIO,    kScript},
    {"spawn",           Call::spawn,          EAGAIN, "cannot start \"[^\"]*\""},
    {"thread creation", Call::threadCreation, EAGAIN, kThread},
    {"pipe open",       Call::pipeOpen,       EMFILE, "Cannot open .*ntpclient|pipe of the time reports", true},
    {"pipe read",       Call::pipeRead,       EIO,    "Read failed", true},
    {"accept",          Call::accept,         ENOBUFS, "cannot accept clients"},
    {"accept, full",    Call::accept,         EMFILE, "client turned away"},
    {"send",            Call::send,           ENOBUFS, "client [0-9]+ .*dropped"},
};
// clang-format on

}  // namespace

std::span<const FaultPoint> faultPoints() {
  return kPoints;
}

}  // namespace faults
