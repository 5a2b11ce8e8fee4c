#include "BenchWall.h"

#include <time.h>

#include <cstdio>
#include <cstdlib>

#include "Moments.h"
#include "carts/Orvane_Audio_Routines.h"
#include "platform/Files.h"

namespace vorda::bench {
namespace {

std::int64_t ProcessorNow() {
  timespec now{};
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return now.tv_sec * kSecond + now.tv_nsec;
}

}  // namespace

void UseWall(const std::string& directory) {
  platform::CloseAllFiles();
  gAudioWallSettings = {};
  gAudioWallSettings.MaintainLegacyCartList = 1;
  InitBlankCartInfo();
  for (AudioWallPart& part : gAudioWallParts) part = {directory, {}, false, 0};
}

std::string CartFileIn(const std::string& directory, std::int32_t cart, const char* extension) {
  char name[32];
  std::snprintf(name, sizeof name, "/ORV%05d.%s", cart, extension);
  return directory + name;
}

void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "this does not hold: %s\n", what);
  std::exit(1);
}

Duration Lasts(const std::function<void()>& work) {
  const std::int64_t processor = ProcessorNow();
  const std::int64_t began = Now();
  work();
  const std::int64_t ended = Now();
  return {ProcessorNow() - processor, ended - began};
}

void Samples::Add(const std::string& name, Duration lasted) {
  samples_[name].push_back(lasted.processor);
  samples_[name + "_elapsed"].push_back(lasted.elapsed);
}

void Samples::Print() const {
  const char* ahead = "{";
  for (const auto& [name, values] : samples_) {
    std::printf("%s\"%s\": [", ahead, name.c_str());
    for (std::size_t i = 0; i < values.size(); ++i)
      std::printf("%s%lld", i == 0 ? "" : ", ", static_cast<long long>(values[i]));
    std::printf("]");
    ahead = ", ";
  }
  std::puts("}");
}

}  // namespace vorda::bench
