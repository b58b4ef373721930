#pragma once

#include <string>
#include <vector>

namespace plugin {

// Hears the recording NTP clients that the service starts.
// Owner: the test. Failure: throws std::system_error.
class ClientPipe {
 public:
  ClientPipe();  // maps the device's program to the recording one
  ~ClientPipe();
  ClientPipe(const ClientPipe&) = delete;
  ClientPipe& operator=(const ClientPipe&) = delete;

  // The lines of the next message; empty when none came within ten seconds.
  std::vector<std::string> next();
  // The next message is of a client that started, or ended: its process id, or else empty.
  std::string nextStart();
  std::string nextEnd();

 private:
  bool readMore();

  int m_pipe = -1;
  std::string m_read;
};

}  // namespace plugin
