#include "faults/Points.h"

namespace installer::faults {

namespace {

std::vector<long> partOf(const std::vector<long>& points, std::size_t part, std::size_t parts) {
  std::vector<long> own;
  for (std::size_t i = part - 1; i < points.size(); i += parts) own.push_back(points[i]);
  return own;
}

}  // namespace

std::vector<long> pointsOf(const Kind& kind, const Scenario& scenario, const Learned& learned,
                           const Options& options) {
  std::vector<long> points = kind.points(scenario, learned);
  std::erase_if(points, [&](long point) {
    return point < options.first || (options.last > 0 && point > options.last);
  });
  return partOf(sampleOf(points, options.sample, options.seed), options.part, options.parts);
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
