#include "simulation/world/World.h"

#include <chrono>
#include <fstream>
#include <stdexcept>

#include "ClockService.h"
#include "clock/VirtualClock.h"
#include "runtime/HostContext.h"
#include "simulation/Wire.h"
#include "simulation/world/DeviceParts.h"

namespace simulation {
namespace {

int whole(std::int64_t number) {
  return static_cast<int>(number);
}

}  // namespace

ClockServiceIfc& World::clockInterface() {
  return dynamic_cast<ClockServiceIfc&>(*m_service);
}

void World::apply(const Step& step) {
  if (step.act == Act::restart) return restart(step);
  if (applyToTime(step) || applyToClock(step) || applyToManagement(step) || applyToPeers(step)) {
    return;
  }
  applyToDevice(step);
}

bool World::applyToTime(const Step& step) {
  switch (step.act) {
    case Act::pass:
      return m_clock->advance(std::chrono::milliseconds(step.numbers[0])), true;
    case Act::next:
      if (!m_clock->fireNext()) m_journal.add("no timer is armed");
      return true;
    case Act::jump:
      return static_cast<void>(m_clock->setWall(std::chrono::milliseconds(step.numbers[0]))), true;
    case Act::report:
      return report(step), true;
    default:
      return false;
  }
}

bool World::applyToClock(const Step& step) {
  const auto& n = step.numbers;
  ClockServiceIfc& clock = clockInterface();
  switch (step.act) {
    case Act::setTime:
      return answered(clock.setTime(whole(n[0]), whole(n[1]), whole(n[2]))), true;
    case Act::setSeconds:
      return clock.setTime(whole(n[0])), true;
    case Act::setDate:
      return answered(clock.setDate(whole(n[0]), whole(n[1]), whole(n[2]))), true;
    case Act::saveFallback:
      return m_journal.add("-> " + clock.setFallbackTime()), true;
    case Act::observe:
      return answered(clock.observeTimeEvents(observer(step.texts[0]))), true;
    case Act::unobserve:
      return answered(clock.unobserveTimeEvents(observer(step.texts[0]))), true;
    case Act::convert:
      return convert(step.texts[0]), true;
    default:
      return false;
  }
}

bool World::applyToManagement(const Step& step) {
  switch (step.act) {
    case Act::set:
      return answered(set(step.texts[0], step.texts[1])), true;
    case Act::get:
      return m_journal.add("-> " + get(step.texts[0])), true;
    case Act::reset:
      return answered(reset()), true;
    case Act::deviceValue:
      m_values[step.texts[0]] = step.texts[1];
      return m_management->setValue(step.texts[0], step.texts[1]), true;
    case Act::mayReset:
      m_mayReset[step.texts[0]] = step.numbers[0] == 1;
      return m_management->setUserData(step.texts[0], step.numbers[0] == 1), true;
    default:
      return false;
  }
}

bool World::applyToPeers(const Step& step) {
  switch (step.act) {
    case Act::call:
      return m_peers->call(m_service.get(), wireOf(step), step.texts[1], step.texts[2]), true;
    case Act::garbage:
      return m_peers->call(m_service.get(), step.texts[0], step.texts[1], "plain"), true;
    case Act::callNobody:
      return m_peers->call(nullptr, wireOf(step), step.texts[1], "plain"), true;
    default:
      return false;
  }
}

void World::applyToDevice(const Step& step) {
  const bool on = !step.numbers.empty() && step.numbers[0] == 1;
  switch (step.act) {
    case Act::outsideStore:
      m_store.putAside(step.texts[0], step.texts[1]);
      break;
    case Act::storeRefuses:
      m_store.refuses = on;
      break;
    case Act::storeSilent:
      m_store.silent = on;
      break;
    case Act::launchFails:
      deviceParts().launchFails = on;
      break;
    case Act::lookupsFail:
      deviceParts().lookupsFail = on;
      break;
    case Act::logLevel:
      host::LogBook::instance().setLevel(whole(step.numbers[0]));
      break;
    case Act::fallbackFile:
      std::ofstream("data/fallback_time.txt", std::ios::binary) << step.texts[0];
      break;
    case Act::service:
      setService(step.texts[0], on);
      break;
    case Act::jack:
      m_physical->jack(whole(step.numbers[0]), whole(step.numbers[1]));
      break;
    default:
      idle();
  }
}

void World::report(const Step& step) {
  const std::int64_t seconds = step.numbers[0];
  if (step.numbers[1] == 1) static_cast<void>(m_clock->setWall(std::chrono::seconds(seconds)));
  m_listener.report(static_cast<std::uint32_t>(seconds));
}

void World::convert(const std::string& utc) {
  try {
    m_journal.add("-> " + clockInterface().convertUtcStringToLocalString(utc));
  } catch (const std::logic_error&) {
    m_journal.add("-> a logic error");
  }
}

void World::idle() {
  m_service->run();
  m_service->shutdown();
  dynamic_cast<physicalEventObserver&>(*m_service).hookswitchEvent(PhysDefs::actionPressed);
}

ClockServiceObserverIfc* World::observer(const std::string& name) {
  if (name == "nobody") return nullptr;
  auto& observer = m_observers[name];
  if (!observer) observer = std::make_unique<RecordingObserver>(m_journal, name);
  return observer.get();
}

}  // namespace simulation
