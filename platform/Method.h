#pragma once

#include <string>
#include <vector>

// One named, typed value of a Method. Immutable.
class Parameter {
 public:
  // The direction of the value. Events use 0, as calls do.
  enum directions { in = 0, out = 1 };
  enum types { integer, text, boolean };

  Parameter(std::string name, directions direction, int value);
  Parameter(std::string name, directions direction, std::string value);
  Parameter(std::string name, directions direction, bool value);

  const std::string& getName() const { return m_name; }
  directions getDirection() const { return m_direction; }
  types getType() const { return m_type; }

  // REQUIRES: the type asked for is getType().
  int getInt() const { return m_number; }
  bool getBool() const { return m_number != 0; }
  const std::string& getString() const { return m_text; }

  bool operator==(const Parameter& other) const {
    return m_number == other.m_number && m_type == other.m_type &&
           m_direction == other.m_direction && m_name == other.m_name && m_text == other.m_text;
  }

 private:
  std::string m_name;
  std::string m_text;
  int m_number;
  types m_type;
  directions m_direction;
};

// A remote call, its reply, or an event: a name and an ordered list of parameters.
// A value type; not shared between threads.
class Method {
 public:
  enum methodTypes { call = 0, reply = 1 };  // events are calls without a reply

  Method();  // a call without name and parameters, for a codec to decode into
  Method(const char* name, methodTypes type);
  ~Method();
  Method(const Method&);
  Method& operator=(const Method&);

  const std::string& getName() const { return m_name; }
  methodTypes getType() const { return m_type; }
  const std::vector<Parameter>& getParameters() const { return m_parameters; }

  bool operator==(const Method& other) const {
    return m_type == other.m_type && m_name == other.m_name && m_parameters == other.m_parameters;
  }

  // Replaces the whole content. For codecs.
  void reset(std::string name, methodTypes type);

  // Append one parameter.
  void addIntParameter(const char* name, int value, Parameter::directions direction);
  void addStringParameter(const char* name, const std::string& value,
                          Parameter::directions direction);
  void addBoolParameter(const char* name, bool value, Parameter::directions direction);

  // Read the first parameter of this name, direction and type. False, and `value` untouched, when
  // there is none.
  bool getIntParameter(const char* name, int& value, Parameter::directions direction) const;
  bool getStringParameter(const char* name, std::string& value,
                          Parameter::directions direction) const;
  bool getBoolParameter(const char* name, bool& value, Parameter::directions direction) const;

 private:
  std::string m_name;
  std::vector<Parameter> m_parameters;
  methodTypes m_type;
};
