#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "FrameworkContext.h"
#include "Invoker.h"

namespace host {

class SecurityLog;

// Records in the security log the remote calls that set the clock or the saved time (setTime,
// setTimeInt, setDate, setFallbackTime). It stands between the invoker and the framework and wraps
// the codecs, so that it records exactly what the service decodes, and no call is decoded twice. A
// call without a reply is accepted if the clock was set meanwhile.
// Owner: the device. Thread: that of the calls.
class RemoteSetRecorder final : public FrameworkContext {
 public:
  // Both outlive it.
  RemoteSetRecorder(FrameworkContext& remote, SecurityLog& log);
  ~RemoteSetRecorder();
  RemoteSetRecorder(const RemoteSetRecorder&) = delete;
  RemoteSetRecorder& operator=(const RemoteSetRecorder&) = delete;

  // Hands itself to the invoker, whose calls it records. The result must not outlive it.
  [[nodiscard]] std::unique_ptr<Invoker> recorded(std::unique_ptr<Invoker> invoker);

  MessageCodec* getCodec(const std::string& name) override;
  Proxy* createProxy(const std::string& interfaceName, const std::string& address) override;

 private:
  class Codec;
  class RecordedInvoker;

  void endCall();

  FrameworkContext& m_remote;
  SecurityLog& m_log;
  std::vector<std::pair<std::string, std::unique_ptr<Codec>>> m_codecs;  // by name
};

}  // namespace host
