#pragma once

#include <json/json.h>

#include <fstream>
#include <set>
#include <string>
#include <utility>

#include "simcam/config.h"

namespace simcam {

/// A word of the configuration and what it stands for.
template <class T>
struct Named {
  const char* name;
  T value;
};

/// Reads the members of one object of the configuration; each is asked for once, and what nobody asked for is a
/// mistake.
class Members {
 public:
  Members(const Json::Value& object, std::string where) : object_(object), where_(std::move(where)) {
    if (!object.isObject()) Fail("must be an object");
  }

  [[noreturn]] void Fail(const std::string& what) const { throw ConfigError(where_ + ": " + what); }

  bool Has(const char* key) {
    asked_.insert(key);
    return object_.isMember(key);
  }

  const Json::Value& At(const char* key) const { return object_[key]; }

  const std::string& Where() const { return where_; }

  void Read(const char* key, std::string& value) {
    if (!Has(key)) return;
    if (!At(key).isString()) Fail(std::string(key) + " must be a text");
    value = At(key).asString();
  }

  void Read(const char* key, bool& value) {
    if (!Has(key)) return;
    if (!At(key).isBool()) Fail(std::string(key) + " must be true or false");
    value = At(key).asBool();
  }

  void Read(const char* key, int& value, int least, int most) {
    if (!Has(key)) return;
    if (!At(key).isInt() || At(key).asInt() < least || At(key).asInt() > most) {
      Fail(std::string(key) + " must be a whole number from " + std::to_string(least) + " to " + std::to_string(most));
    }
    value = At(key).asInt();
  }

  template <class T, size_t N>
  void Read(const char* key, T& value, const Named<T> (&names)[N]) {
    std::string text;
    Read(key, text);
    if (Has(key)) value = Choose(key, text, names);
  }

  template <class T, size_t N>
  T Choose(const char* key, const std::string& text, const Named<T> (&names)[N]) const {
    std::string known;
    for (const Named<T>& row : names) {
      if (text == row.name) return row.value;
      known += std::string(known.empty() ? "" : ", ") + row.name;
    }
    Fail(std::string(key) + " \"" + text + "\" is none of " + known);
  }

  void Finish() const {
    for (const std::string& key : object_.getMemberNames()) {
      if (!asked_.contains(key)) Fail("unknown member " + key);
    }
  }

 private:
  const Json::Value& object_;
  std::string where_;
  std::set<std::string> asked_;
};

/// Reads a file of JSON. Throws ConfigError.
inline Json::Value ReadJson(const std::string& path) {
  std::ifstream file(path);
  if (!file) throw ConfigError("cannot read " + path);
  Json::Value root;
  std::string errors;
  if (!Json::parseFromStream(Json::CharReaderBuilder(), file, &root, &errors)) throw ConfigError(path + ": " + errors);
  return root;
}

inline void CheckPath(const Members& members, const std::string& path) {
  if (!path.starts_with('/')) members.Fail("path \"" + path + "\" must start with a slash");
}

}  // namespace simcam
