#include "MessageCodec.h"

#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "FrameworkContext.h"
#include "Method.h"
#include "MethodText.h"
#include "Promise.h"

namespace {

using conformance::textOf;
using IntLimits = std::numeric_limits<int>;

Method withEveryType() {
  Method method("everyType", Method::reply);
  for (const int number : {0, IntLimits::min(), IntLimits::max(), -1, 200, -30'000})
    method.addIntParameter("number", number, Parameter::out);
  method.addStringParameter("empty", "", Parameter::out);
  method.addStringParameter("", "nameless", Parameter::in);
  method.addStringParameter("text", "\"quoted\"\n\t\\ \xc3\xbc end", Parameter::in);
  method.addStringParameter("long", std::string(70'000, 'l'), Parameter::in);
  method.addBoolParameter("yes", true, Parameter::out);
  method.addBoolParameter("no", false, Parameter::in);
  return method;
}

class MessageCodecPromise : public conformance::Promise {
 protected:
  template <class Check>
  void forEachCodec(Check check) {
    const std::vector<std::string> names = platform().codecs();
    ASSERT_FALSE(names.empty());
    for (const std::string& name : names) {
      SCOPED_TRACE(name);
      MessageCodec* const codec = platform().remote().getCodec(name);
      ASSERT_NE(codec, nullptr);
      check(*codec);
    }
  }
  static std::string encoded(MessageCodec& codec, Method method) {
    std::stringstream stream;
    codec.encode(method, stream);
    return stream.str();
  }
  static bool decode(MessageCodec& codec, const std::string& bytes, Method& method) {
    std::stringstream stream(bytes);
    return codec.decode(stream, method);
  }
};

TEST_F(MessageCodecPromise, ReadsWhatItHasWritten) {
  promises("Writes the whole Method.");
  forEachCodec([](MessageCodec& codec) {
    for (const Method& method :
         {Method("getTime", Method::call), Method("", Method::reply), withEveryType()}) {
      Method decoded("other", Method::call);
      decoded.addIntParameter("leftOver", 1, Parameter::in);
      ASSERT_TRUE(decode(codec, encoded(codec, method), decoded));
      EXPECT_EQ(textOf(decoded), textOf(method));
      EXPECT_TRUE(decoded == method);
    }
  });
}

TEST_F(MessageCodecPromise, RefusesOtherBytes) {
  promises("False when the bytes are not one.");
  forEachCodec([](MessageCodec& codec) {
    const std::string whole = encoded(codec, withEveryType());
    Method decoded;
    for (const std::string& bytes :
         {std::string(), std::string("\xc1 no method"), whole.substr(0, whole.size() / 2),
          whole.substr(0, whole.size() - 1), whole.substr(1)})
      EXPECT_FALSE(decode(codec, bytes, decoded)) << bytes.size();
  });
}

TEST_F(MessageCodecPromise, ReadsToTheEndOfTheStream) {
  promises("Reads one whole Method, to the end of the stream.");
  forEachCodec([](MessageCodec& codec) {
    const std::string whole = encoded(codec, Method("getTime", Method::call));
    Method decoded;
    EXPECT_FALSE(decode(codec, whole + whole, decoded));
  });
}

TEST_F(MessageCodecPromise, KeepsNoState) {
  promises("Thread: any; a codec keeps no state between calls.");
  forEachCodec([](MessageCodec& codec) {
    const std::string first = encoded(codec, withEveryType());
    conformance::onTwoThreads([&] {
      Method decoded;
      EXPECT_FALSE(decode(codec, first.substr(0, 10), decoded));
      EXPECT_EQ(encoded(codec, withEveryType()), first);
      EXPECT_TRUE(decode(codec, first, decoded));
      EXPECT_EQ(textOf(decoded), textOf(withEveryType()));
    });
  });
}

}  // namespace
