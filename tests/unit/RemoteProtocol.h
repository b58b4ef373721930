#pragma once

#include <string>
#include <vector>

namespace unit {

using Lines = std::vector<std::string>;

// The reply when a request parameter is missing.
enum class Missing { impossible, noReply, emptyReply, withParameter };

// One method of the remote protocol. Parameters are lines as in support/MethodText.h.
struct RemoteRow {
  std::string name;
  Lines request;     // its parameters
  std::string call;  // what the service is asked
  Lines reply;       // its parameters
  Missing missing;
  std::string missingReply;  // that one parameter
};

// The remote protocol, whole, in its order; the answers are those of RecordingService.
const std::vector<RemoteRow>& remoteProtocol();

}  // namespace unit
