// The streaming control: one sound input, taken in for as long as it runs.
//
// It owns what it needs inside, threads included: blocks of 16-bit samples come in order through AudioData on
// the interface thread, and wait for up to two minutes when that is busy. It never takes another device's
// sound: an input that goes away ends its blocks and is taken up again by itself when it is back.

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/Hook.h"

namespace vorda::platform {

class StreamControl {
 public:
  virtual ~StreamControl() = default;

  // Names of the control that this one stands in for.
  std::int16_t numberchannels = 1;
  std::int32_t samplerate = 22050;    // hertz
  std::int16_t wavedevicenumber = 0;  // the n-th sound input, counted from 1; 0 = none

  // A block of samples, channels interleaved, little-endian. Runs on the interface thread, also behind
  // message boxes; not after StopStream.
  std::function<void(const char* bytes, std::int32_t length)> AudioData;

  // Begins with the settings of this moment. An input that isn't there yet is waited for.
  virtual void StartStream() = 0;
  // Ends it. Blocks that have not been handed over are dropped.
  virtual void StopStream() = 0;
  // Hands over at once what has been taken in so far: the cut that ends here gets it all.
  virtual void EndOfCut() = 0;
  // The peak of the newest 50 ms, 0 to 100 per cent of full scale; 0 when nothing has come for 200 ms.
  virtual std::int16_t StreamLevel() const = 0;
  // 2 while the input delivers.
  virtual std::int16_t StreamState() const = 0;
};

inline constexpr std::int16_t kStreamStopped = 0;
inline constexpr std::int16_t kStreamWaiting = 1;  // started, and its input isn't there
inline constexpr std::int16_t kStreamRunning = 2;

std::unique_ptr<StreamControl> MakeStreamControl();
Hook<std::unique_ptr<StreamControl>()>& StreamControlFactory();

}  // namespace vorda::platform
