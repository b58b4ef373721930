#include "acceptance/Telephone.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <ctime>
#include <deque>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <thread>

#include "InvokerResponse.h"
#include "MethodText.h"
#include "Promise.h"
#include "SystemClock.h"

namespace conformance {
namespace {

template <class Factory>
void find(void* library, const char* name, Factory& factory) {
  factory = reinterpret_cast<Factory>(dlsym(library, name));
  if (factory == nullptr) throw std::runtime_error(std::string("the plug-in has no ") + name);
}

// Passes methods on in memory: the bytes are their numbers.
class NumberCodec final : public MessageCodec {
 public:
  void encode(Method& method, std::iostream& stream) override {
    stream << m_methods.size();
    m_methods.push_back(method);
  }
  bool decode(std::iostream& stream, Method& method) override {
    std::size_t number = 0;
    if (!(stream >> number) || number >= m_methods.size()) return false;
    method = m_methods[number];
    return true;
  }

 private:
  std::deque<Method> m_methods;
};

class KeptReply final : public InvokerResponse {
 public:
  explicit KeptReply(std::string& reply) : m_reply(reply) {}
  const char* getCodecName() override { return "number"; }
  const char* getReplyAddress() override { return "peer"; }
  void sendReply(const char* data, int length) override {
    m_reply.assign(data, static_cast<std::size_t>(length));
  }

 private:
  std::string& m_reply;
};

// These parameters of a reply, each with two digits or more.
std::string joined(const Method& reply, std::initializer_list<std::size_t> indices, char between) {
  std::string text;
  for (const std::size_t index : indices) {
    const int number = reply.getParameters().at(index).getInt();
    if (!text.empty()) text += between;
    if (number < 10) text += '0';
    text += std::to_string(number);
  }
  return text;
}

}  // namespace

Plugin::Plugin(const std::filesystem::path& file) {
  void* const library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) throw std::runtime_error(dlerror());
  find(library, "createClockService", makeService);
  find(library, "createClockServiceInvoker", makeInvoker);
  find(library, "createClockServiceObserverProxy", makeProxy);
}

bool EventRecorder::sendMethod(Method& event) {
  const std::lock_guard lock(m_mutex);
  m_events.push_back(textOf(event));
  return true;
}

std::vector<std::string> EventRecorder::take() {
  const std::lock_guard lock(m_mutex);
  return std::exchange(m_events, {});
}

// One codec and one peer, whose proxy sends to the recorder.
class Telephone::ShortCut final : public FrameworkContext {
 public:
  explicit ShortCut(Telephone& telephone) : m_proxy(telephone.m_plugin.makeProxy()) {
    m_proxy->initProxy(telephone.m_events);
  }
  MessageCodec* getCodec(const std::string& /*name*/) override { return &codec; }
  Proxy* createProxy(const std::string& /*interface*/, const std::string& /*address*/) override {
    return m_proxy.get();
  }

  NumberCodec codec;

 private:
  const std::unique_ptr<Proxy> m_proxy;
};

Telephone::Telephone(Platform& platform) : m_platform(platform), m_plugin(platform.plugin()) {
  switchOn();
}

Telephone::~Telephone() {
  switchOff();
}

void Telephone::switchOn() {
  m_framework = std::make_unique<ShortCut>(*this);
  m_invoker.reset(m_plugin.makeInvoker());
  m_invoker->initInvoker(m_framework.get());
  m_service.reset(m_plugin.makeService());
  call("observeTimeEvents");
  m_service->init(m_platform.context());
}

// The listener ends when its open or read of the pipe returns.
void Telephone::switchOff() {
  m_service->shutdown();
  m_platform.dropService();
  std::atomic<bool> ended{false};
  std::thread waker([&] {
    while (!ended) {
      const int opened = open(pipe().c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
      if (opened >= 0) close(opened);
      std::this_thread::yield();
    }
  });
  m_service.reset();
  ended = true;
  waker.join();
  m_invoker.reset();
  m_framework.reset();
}

void Telephone::restart() {
  switchOff();
  m_platform.restart();
  switchOn();
}

Method Telephone::call(const std::string& name, const Values& values) {
  Method request(name.c_str(), Method::call);
  for (const auto& [parameter, value] : values) {
    if (const int* const number = std::get_if<int>(&value)) {
      request.addIntParameter(parameter.c_str(), *number, Parameter::in);
    } else {
      request.addStringParameter(parameter.c_str(), std::get<std::string>(value), Parameter::in);
    }
  }
  std::stringstream stream;
  m_framework->codec.encode(request, stream);
  const std::string bytes = stream.str();
  std::string reply;
  m_invoker->handleMessage(m_service.get(), bytes.data(), static_cast<int>(bytes.size()),
                           new KeptReply(reply));
  std::stringstream answer(reply);
  Method decoded;
  m_framework->codec.decode(answer, decoded);
  return decoded;
}

std::string Telephone::text(const std::string& name) {
  const Method reply = call(name);
  return reply.getParameters().empty() ? "" : reply.getParameters().front().getString();
}

std::string Telephone::localTime() {
  return joined(call("getTimeInts"), {0, 1, 2}, ':');
}

std::string Telephone::localDate() {
  return joined(call("getDateInts"), {2, 1, 0}, '-');
}

void Telephone::reportTime(std::uint32_t secondsSinceEpoch) {
  setClock(secondsSinceEpoch);
  int opened = -1;
  // Only a pipe that the listener has opened can be opened without waiting.
  const auto canOpen = [&] {
    opened = open(pipe().c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    return opened >= 0;
  };
  if (!becomesTrue(canOpen)) throw std::runtime_error("the listener does not open the pipe");
  const ssize_t written = write(opened, &secondsSinceEpoch, sizeof secondsSinceEpoch);
  close(opened);
  if (written != sizeof secondsSinceEpoch) throw std::runtime_error("the pipe cannot be written");
}

void setClock(std::int64_t secondsSinceEpoch) {
  const auto seconds = static_cast<time_t>(secondsSinceEpoch);
  if (stime(&seconds) != 0) throw std::runtime_error("the clock cannot be set");
}

std::int64_t instantOf(const std::string& utc) {
  tm fields{};
  if (strptime(utc.c_str(), "%Y-%m-%dT%H:%M:%S", &fields) == nullptr)
    throw std::invalid_argument(utc);
  return timegm(&fields);
}

}  // namespace conformance
