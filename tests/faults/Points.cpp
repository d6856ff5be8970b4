#include "faults/Points.h"

namespace installer::faults {

std::vector<long> pointsOf(const Kind& kind, const Learned& learned, const Options& options) {
  std::vector<long> points;
  const long last = options.last > 0 ? options.last : static_cast<long>(learned.calls.size());
  for (long number = 1; number <= static_cast<long>(learned.calls.size()); ++number)
    if (number >= options.first && number <= last &&
        kind.applies(learned.calls[static_cast<std::size_t>(number - 1)]))
      points.push_back(number);
  return sampleOf(points, options.sample, options.seed);
}

std::vector<long> sampleOf(const std::vector<long>& points, std::size_t wanted,
                           unsigned long seed) {
  if (wanted == 0 || wanted >= points.size()) return points;
  std::vector<long> sample;
  for (std::size_t i = 0; i < wanted; ++i) {
    const std::size_t start = i * points.size() / wanted;
    const std::size_t end = (i + 1) * points.size() / wanted;
    sample.push_back(points[start + seed * (i + 7) % (end - start)]);
  }
  return sample;
}

}  // namespace installer::faults
