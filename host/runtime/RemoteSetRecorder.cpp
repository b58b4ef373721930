#include "runtime/RemoteSetRecorder.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <optional>

#include "Invoker.h"
#include "MessageCodec.h"
#include "Method.h"
#include "base/Origin.h"
#include "runtime/ChangeRecorder.h"
#include "services/SecurityLog.h"

namespace host {
namespace {

struct SetMethod {
  const char* name;
  std::array<const char*, 3> parameters;  // null after the last one
  const char* result;  // a boolean, or the stored text; null: the method has no reply
};

constexpr SetMethod kSetMethods[] = {
    {"setTime", {"setTimeHours", "setTimeMinutes", "setTimeSeconds"}, "setTimeReturn"},
    {"setTimeInt", {"setTime", nullptr, nullptr}, nullptr},
    {"setDate", {"setDateDay", "setDateMonth", "setDateYear"}, "setDateReturn"},
    {"setFallbackTime", {}, "setFallbackTimeReturn"},
};

const SetMethod* findSetMethod(const std::string& name) {
  const auto found = std::find_if(std::begin(kSetMethods), std::end(kSetMethods),
                                  [&](const SetMethod& method) { return name == method.name; });
  return found == std::end(kSetMethods) ? nullptr : &*found;
}

// As in "Remote call setDate(29, 2, 2028)". A missing parameter is a question mark.
std::string textOf(const SetMethod& set, const Method& call) {
  std::string words;
  for (const char* const name : set.parameters) {
    if (name == nullptr) break;
    int value = 0;
    const bool there = call.getIntParameter(name, value, Parameter::in);
    words += (words.empty() ? "" : ", ") + (there ? std::to_string(value) : "?");
  }
  return "Remote call " + std::string(set.name) + '(' + words + ')';
}

}  // namespace

// Remembers a call until its reply is encoded.
class RemoteSetRecorder::Codec final : public MessageCodec {
 public:
  Codec(MessageCodec& codec, SecurityLog& log) : m_codec(codec), m_log(log) {}

  bool decode(std::iostream& stream, Method& method) override {
    end();
    if (!m_codec.decode(stream, method)) return false;
    m_set = findSetMethod(method.getName());
    if (m_set == nullptr) return true;
    m_cause.emplace(Cause{"call", m_set->name});
    noteCall(method);
    return true;
  }

  void encode(Method& method, std::iostream& stream) override {
    if (m_set != nullptr && method.getName() == m_set->name) noteReply(method);
    m_codec.encode(method, stream);
  }

  // Call it when the service has handled the call. Without a reply, only the clock shows what the
  // service did.
  void end() {
    if (m_set != nullptr && m_set->result == nullptr) {
      m_log.note(SecurityLog::Event::remoteSet, wallSetsHere() == m_wallSetsBefore, m_call);
    }
    m_set = nullptr;
    m_cause.reset();
  }

 private:
  void noteCall(const Method& call) {
    m_call = textOf(*m_set, call);
    m_wallSetsBefore = wallSetsHere();
  }

  void noteReply(const Method& reply) {
    bool done = false;
    std::string stored;
    static_cast<void>(reply.getBoolParameter(m_set->result, done, Parameter::out));
    static_cast<void>(reply.getStringParameter(m_set->result, stored, Parameter::out));
    m_log.note(SecurityLog::Event::remoteSet, !done && stored.empty(), m_call);
    m_set = nullptr;
    m_cause.reset();
  }

  MessageCodec& m_codec;
  SecurityLog& m_log;
  const SetMethod* m_set = nullptr;
  std::string m_call;
  std::uint64_t m_wallSetsBefore = 0;
  std::optional<CauseScope> m_cause;
};

class RemoteSetRecorder::RecordedInvoker final : public Invoker {
 public:
  RecordedInvoker(std::unique_ptr<Invoker> invoker, RemoteSetRecorder& recorder)
      : m_invoker(std::move(invoker)), m_recorder(recorder) {}

  void initInvoker(FrameworkContext* context) override { m_invoker->initInvoker(context); }

  void handleMessage(Executable* executable, const char* message, int length,
                     InvokerResponse* response) override try {
    m_invoker->handleMessage(executable, message, length, response);
    m_recorder.endCall();
  } catch (...) {
    m_recorder.endCall();
    throw;
  }

 private:
  const std::unique_ptr<Invoker> m_invoker;
  RemoteSetRecorder& m_recorder;
};

RemoteSetRecorder::RemoteSetRecorder(FrameworkContext& remote, SecurityLog& log)
    : m_remote(remote), m_log(log) {}

RemoteSetRecorder::~RemoteSetRecorder() = default;

std::unique_ptr<Invoker> RemoteSetRecorder::recorded(std::unique_ptr<Invoker> invoker) {
  invoker->initInvoker(this);
  return std::make_unique<RecordedInvoker>(std::move(invoker), *this);
}

void RemoteSetRecorder::endCall() {
  for (const auto& [name, codec] : m_codecs) codec->end();
}

MessageCodec* RemoteSetRecorder::getCodec(const std::string& name) {
  for (const auto& [known, codec] : m_codecs) {
    if (known == name) return codec.get();
  }
  MessageCodec* const codec = m_remote.getCodec(name);
  if (codec == nullptr) return nullptr;
  return m_codecs.emplace_back(name, std::make_unique<Codec>(*codec, m_log)).second.get();
}

Proxy* RemoteSetRecorder::createProxy(const std::string& interfaceName,
                                      const std::string& address) {
  return m_remote.createProxy(interfaceName, address);
}

}  // namespace host
