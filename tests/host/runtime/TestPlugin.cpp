// A plug-in for tests, whose service reports what happens to it. Built in several kinds:
// PLUGIN_NULL names a factory that returns null, PLUGIN_WITHOUT_PROXY leaves one out.
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <string_view>
#include <thread>

#include "Context.h"
#include "Executable.h"
#include "Invoker.h"
#include "InvokerResponse.h"
#include "LocalMgmtIfc.h"
#include "ManageableData.h"
#include "MgmtAgentIfc.h"
#include "PhysicalInterfaceServiceIfc.h"
#include "Proxy.h"
#include "Service.h"
#include "host/runtime/TestPlugins.h"
#include "physicalEventObserver.h"

// Weak: a clockhost that loads the plug-in does not define it.
extern "C" void testPluginNote(const char* text) __attribute__((weak));

namespace {

constexpr const char* kPipe = "/tmp/votk/ipc/ntpclient";
constexpr unsigned int kPeriod = 1000;

void note(const std::string& text) {
  if (testPluginNote != nullptr) testPluginNote(text.c_str());
}

// Waits for the pipe as the real listener does.
class Listener {
 public:
  void start() {
    m_running = true;
    m_thread = std::thread([this] { listen(); });
  }
  ~Listener() {
    m_running = false;
    if (m_thread.joinable()) m_thread.join();
  }

 private:
  void listen() {
    while (m_running) {
      note("listener waits");
      const int pipe = ::open(kPipe, O_RDONLY);
      char bytes[4];
      if (pipe >= 0 && ::read(pipe, bytes, sizeof bytes) < 0) note("listener cannot read");
      if (pipe >= 0) ::close(pipe);
    }
  }

  std::atomic<bool> m_running{false};
  std::thread m_thread;
};

class TestService : public Service, public MgmtAgentIfc, public physicalEventObserver {
 public:
  ~TestService() override { note("deleted"); }

  void init(Context& context) override {
    note(std::string("init with TZ ") + std::getenv("TZ"));
    for (const char* const name : {"DataAccessServiceIfc", "LocalMgmtIfc", "SecurityLogServiceIfc",
                                   "PhysicalInterfaceServiceIfc", "ClockService"}) {
      if (context.getService(name) != nullptr) note(std::string("found ") + name);
    }
    joinLocalManagement(dynamic_cast<LocalMgmtIfc*>(context.getService("LocalMgmtIfc")));
    auto* const physical = dynamic_cast<PhysicalInterfaceServiceIfc*>(
        context.getService("PhysicalInterfaceServiceIfc"));
    if (physical != nullptr) physical->subscribe(this, {{{1, 2, 2}}});
    context.startTimer(context.createTimer(*this, kPeriod));
    m_listener.start();
  }
  void shutdown() override { note("shutdown"); }
  void run() override {}
  void timerEvent(int timerId) override { note("timer " + std::to_string(timerId)); }

  bool setData(ManageableData& record) override {
    note("set " + record.getRootId());
    return true;
  }
  bool getData(ManageableData&) override { return false; }
  void manageableDataChanged(ManageableData& record) override {
    std::string value;
    record.interogate(record.getRootId(), value);
    note("changed " + record.getRootId() + "=" + value);
  }
  bool resetUserData() override { return true; }

  void hookswitchEvent(PhysDefs::actionType) override {}
  void jackEvent(PhysDefs::plugIdentifier plug, PhysDefs::plugStatus status) override {
    note("jack " + std::to_string(plug) + " " + std::to_string(status));
  }
  void getSubscribingService() override {}

 private:
  void joinLocalManagement(LocalMgmtIfc* management) {
    if (management == nullptr) return;
    management->registerAgent("ClockMgmtId", this);
    management->observeData("interface-status", this);
  }

  Listener m_listener;
};

class TestInvoker : public Invoker {
 public:
  ~TestInvoker() override { note("invoker deleted"); }
  void handleMessage(Executable*, const char*, int, InvokerResponse* response) override {
    delete response;
  }
  void initInvoker(FrameworkContext* context) override {
    note(context != nullptr ? "invoker has its framework" : "invoker has no framework");
  }
};

class TestProxy : public Proxy {
 public:
  void initProxy(ProxyRequest&) override {}
};

// The object, or null from the factory that PLUGIN_NULL names.
template <class Object>
Object* create(std::string_view kind) {
  constexpr std::string_view kNull = PLUGIN_NULL;
  return kind == kNull ? nullptr : new Object;
}

}  // namespace

extern "C" {

Service* createClockService();
Service* createClockService() {
  return create<TestService>("service");
}

Invoker* createClockServiceInvoker();
Invoker* createClockServiceInvoker() {
  return create<TestInvoker>("invoker");
}

#ifndef PLUGIN_WITHOUT_PROXY
Proxy* createClockServiceObserverProxy();
Proxy* createClockServiceObserverProxy() {
  return create<TestProxy>("proxy");
}
#endif
}
