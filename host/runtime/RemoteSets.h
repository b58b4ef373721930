#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "FrameworkContext.h"

namespace host {

class SecurityLog;

// The framework as the invoker sees it, with codecs that notice the remote calls that set the clock
// or the saved time (setTime, setTimeInt, setDate, setFallbackTime), for the security log: what the
// service decodes is what is recorded, and no call is decoded twice. Owner: the device. Thread:
// that of the calls.
class RemoteSets final : public FrameworkContext {
 public:
  // Both outlive it.
  RemoteSets(FrameworkContext& remote, SecurityLog& log);
  ~RemoteSets();
  RemoteSets(const RemoteSets&) = delete;
  RemoteSets& operator=(const RemoteSets&) = delete;

  MessageCodec* getCodec(const std::string& name) override;
  Proxy* createProxy(const std::string& interfaceName, const std::string& address) override;

 private:
  class Codec;

  FrameworkContext& m_remote;
  SecurityLog& m_log;
  std::vector<std::pair<std::string, std::unique_ptr<Codec>>> m_codecs;  // by name
};

}  // namespace host
