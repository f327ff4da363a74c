#pragma once

#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <utility>

/// Reads metrics in Prometheus' text format 0.0.4; what breaks its rules is a failure of the test.
class PrometheusText {
 public:
  explicit PrometheusText(const std::string& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) line.starts_with('#') ? ReadHead(line) : ReadSample(line);
  }

  /// By name and labels.
  const std::map<std::string, double>& Samples() const { return samples_; }

 private:
  void ReadHead(const std::string& line) {
    static const std::regex head("# (HELP|TYPE) ([a-z_:]+) (.+)");
    std::smatch part;
    ASSERT_TRUE(std::regex_match(line, part, head)) << line;
    EXPECT_TRUE(heads_.insert(part[1].str() + ' ' + part[2].str()).second) << line;
    name_ = part[2];
    if (part[1] == "TYPE") type_ = part[3];
    bucket_ = 0;
  }

  void ReadSample(const std::string& line) {
    static const std::regex sample(R"re(([a-z_:]+)(\{[a-z]+="[^"\\]*"(,[a-z]+="[^"\\]*")*\})? ([0-9.e+-]+))re");
    std::smatch part;
    ASSERT_TRUE(std::regex_match(line, part, sample) && part[1].str().starts_with(name_)) << line;
    EXPECT_TRUE(heads_.contains("HELP " + name_) && heads_.contains("TYPE " + name_)) << line;
    EXPECT_EQ(type_ == "counter", name_.ends_with("_total")) << line;
    const double value = std::stod(part[4]);
    CheckSuffix(part[1].str().substr(name_.size()), value, line);
    EXPECT_TRUE(samples_.emplace(part[1].str() + part[2].str(), value).second) << "twice: " << line;
  }

  void CheckSuffix(const std::string& suffix, double value, const std::string& line) {
    static const std::map<std::string, std::set<std::string>> suffixes = {{"counter", {""}},
                                                                          {"gauge", {""}},
                                                                          {"summary", {"_sum", "_count"}},
                                                                          {"histogram", {"_bucket", "_sum", "_count"}}};
    EXPECT_TRUE(suffixes.at(type_).contains(suffix)) << line;
    if (type_ != "histogram" || suffix == "_sum") return;
    if (suffix == "_bucket") {
      EXPECT_GE(value, std::exchange(bucket_, value)) << line;
    } else {
      EXPECT_EQ(value, bucket_) << line;
    }
  }

  std::string name_;  // of the metric that was begun
  std::string type_;
  double bucket_ = 0;  // the last one of a histogram
  std::set<std::string> heads_;
  std::map<std::string, double> samples_;
};
