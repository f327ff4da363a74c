#include "bench/comparison.h"

#include <cstdio>
#include <vector>

#include "rig/callers.h"

namespace bench {

Comparison Compare(const Way& ours, const Way& other, int pairs) {
  std::vector<double> ourFigures;
  std::vector<double> otherFigures;
  std::vector<double> ratios;
  for (int i = 0; i < pairs; ++i) {
    ourFigures.push_back(ours());
    otherFigures.push_back(other());
    ratios.push_back(ourFigures.back() / otherFigures.back());
  }
  return {Median(ourFigures), Median(otherFigures), Median(ratios)};
}

std::string NumberText(double value, int decimals) {
  char text[64];
  std::snprintf(text, sizeof(text), "%.*f", decimals, value);
  return text;
}

std::string TimeText(double milliseconds) {
  constexpr double kThousand = 1000;
  if (milliseconds < 1) return NumberText(milliseconds * kThousand, 1) + " µs";
  if (milliseconds < kThousand) return NumberText(milliseconds, 1) + " ms";
  return NumberText(milliseconds / kThousand, 2) + " s";
}

}  // namespace bench
