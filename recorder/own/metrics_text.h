#pragma once

#include <string>
#include <string_view>

namespace recorder {

/// Metrics in Prometheus' text format, version 0.0.4
/// (https://prometheus.io/docs/instrumenting/exposition_formats/). One thread.
class MetricsText {
 public:
  /// Begins a metric; its samples follow. `type`: "counter", "gauge", "histogram" or "summary".
  void Begin(std::string_view name, std::string_view type, std::string_view help);

  /// A sample of the metric that was begun. `suffix`: of its name, such as "_sum"; `labels`: `state="up"`.
  void Add(double value, std::string_view labels = {}, std::string_view suffix = {});

  /// All that was added.
  const std::string& Text() const { return text_; }

 private:
  std::string name_;
  std::string text_;
};

/// As short as it reads back the same.
std::string NumberText(double value);

/// `name="value"`; both are plain.
std::string Label(std::string_view name, std::string_view value);

}  // namespace recorder
