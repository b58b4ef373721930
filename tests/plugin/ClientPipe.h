#pragma once

#include <string>
#include <vector>

namespace plugin {

// Receives the reports of the recording NTP clients that the service starts.
// Owner: the test. Failure: throws std::system_error.
class ClientPipe {
 public:
  ClientPipe();  // maps the device's program to the recording one
  ~ClientPipe();
  ClientPipe(const ClientPipe&) = delete;
  ClientPipe& operator=(const ClientPipe&) = delete;

  // The lines of the next message; none after ten seconds.
  std::vector<std::string> next();
  // The process id of the client whose start or end is the next message; empty for another message.
  std::string nextStart();
  std::string nextEnd();

 private:
  bool readMore();

  int m_pipe = -1;
  std::string m_read;
};

}  // namespace plugin
