// Calls of peers in JSON, one per line. Whatever they contain, the real service sends one reply to
// each known method that has one, as the table of methods says, and none to any other call.

#include <algorithm>
#include <sstream>
#include <vector>

#include "Method.h"
#include "fuzz/Property.h"
#include "remote/JsonCodec.h"
#include "support/RemotePeer.h"
#include "support/Telephone.h"
#include "verbs/MethodCatalogue.h"
#include "verbs/NamedRows.h"

namespace {

using fuzz::hold;

constexpr std::size_t kMostCalls = 64;

bool matches(const Parameter& parameter, const host::MethodParameter& row) {
  const Parameter::types types[] = {Parameter::integer, Parameter::text, Parameter::boolean};
  return parameter.getName() == row.name && parameter.getDirection() == Parameter::out &&
         parameter.getType() == types[static_cast<std::size_t>(row.type)];
}

// All of the row's parameters in order. If the request lacks a parameter, none, or a single flag.
void holdReply(const Method& reply, const host::MethodRow& row) {
  const auto& parameters = reply.getParameters();
  hold(reply.getName() == row.name && reply.getType() == Method::reply,
       "a reply has its method's name", row.name);
  hold(parameters.empty() || parameters.size() == row.reply.size() ||
           (parameters.size() == 1 && parameters.front().getType() == Parameter::boolean),
       "a reply has as many parameters as documented", row.name);
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    hold(matches(parameters[i], row.reply[i]), "a reply's parameters are as documented", row.name);
  }
}

// A peer that calls the service and gets its events.
class CheckedPeer {
 public:
  explicit CheckedPeer(support::Telephone& telephone) : m_telephone(telephone) {
    m_peer.onEvent = [](const Method& method) {
      const auto* const event = host::rowNamed(host::remoteEvents(), method.getName());
      hold(event != nullptr && method.getParameters().size() == event->request.size(),
           "an event is one of the known ones", method.getName());
    };
  }

  void call(const std::string& bytes) {
    const auto outcome = m_peer.call(&m_telephone.service(), bytes);
    hold(outcome.deleted, "the service deletes the response", bytes);
    holdAnswer(bytes, outcome.replies);
  }

 private:
  bool decode(const std::string& bytes, Method& method) {
    std::stringstream stream(bytes);
    return m_codec.decode(stream, method);
  }

  void holdAnswer(const std::string& bytes, const std::vector<std::string>& replies) {
    Method request;
    const host::MethodRow* const row =
        decode(bytes, request) ? host::rowNamed(host::remoteMethods(), request.getName()) : nullptr;
    const bool isReplied = row != nullptr && row->replies();
    hold(replies.size() == (isReplied ? 1U : 0U),
         "exactly one reply to a known method, none to others", bytes);
    if (!isReplied) return;
    Method reply;
    hold(decode(replies.front(), reply), "a reply can be decoded", replies.front());
    holdReply(reply, *row);
  }

  support::Telephone& m_telephone;
  host::JsonCodec m_codec;
  support::RemotePeer m_peer{"peer 5", &m_codec};
};

}  // namespace

// Lets pending events be delivered after each call.
void fuzz::property(std::string_view input) {
  support::Telephone telephone;
  CheckedPeer peer(telephone);
  telephone.switchOn();
  Reader lines(input);
  for (std::size_t calls = 0; calls < kMostCalls && !lines.atEnd(); ++calls) {
    peer.call(expanded(lines.line()));
    telephone.pass(std::chrono::milliseconds(1));
  }
  telephone.switchOff();
}
