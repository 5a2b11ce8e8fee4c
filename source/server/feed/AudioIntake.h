// A feed's way from sound to carts: the gate, the wave file behind it, and what is written round a recording.
//
// The sound itself runs all the time. While the gate is open every block goes to the open file at once.

#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "config/Vorda_Common_API.h"
#include "platform/Hook.h"
#include "platform/MultimediaFile.h"
#include "platform/StreamControl.h"

namespace vorda {

// What AudioIntake needs of its feed's window.
struct AudioIntakeHost {
  std::function<WireFeedRecord*()> feed;                  // null for a window without a feed
  std::function<platform::StreamControl*()> stream;       // null when the window has none
  std::function<void(std::string_view line)> sendStatus;  // a line to the status port
  std::function<void(const std::string& number)>
      showCart;                             // the number of the cart being recorded, "" = none
  std::function<void(bool open)> showGate;  // red and Eject, or grey and Record
};

class AudioIntake {
 public:
  explicit AudioIntake(AudioIntakeHost host);

  bool Recording = false;              // the gate
  std::int32_t CurrentRecordCart = 0;  // 0 = none
  platform::MmioHandle AudioFileHandle = 0;

  // Opens the gate on a cart. 0 also when its file couldn't be opened, which the operator has been told; -1
  // for a number that is no cart; -2 with less than ten seconds of room on its disk.
  std::int32_t StartRecording(std::int32_t cart);
  // Ends the recording under way, if there is one, and files it. 0, always.
  std::int32_t EndRecording();
  // Takes a block from the stream.
  void Take(const char* bytes, std::int32_t length);

  // Each 0 or a failure's code, told already.
  std::int32_t OpenAudioFile(std::int32_t cart);
  std::int32_t WriteAudioData(const char* bytes, std::int32_t length);
  std::int32_t CloseAudioFile();

  // Keeps the number of the cart being recorded, and writes it for other programs.
  void SetCurrentlyRecordingCart(std::int32_t cart);

  // How many recordings have begun. What waited behind a box sees by it whether one has begun meanwhile.
  std::uint64_t Begun() const { return begun_; }

 private:
  std::int32_t WriteHeader(platform::MmioHandle handle, const platform::MMCKINFO& riff,
                           const std::string& path, const std::string& format);
  void MarkCart(std::int32_t cart);
  void FileCart(WireFeedRecord* feed, std::int32_t cart, std::uint64_t recording, const TimeStamp& start);

  AudioIntakeHost host_;
  platform::MMCKINFO riffChunk_;
  platform::MMCKINFO dataChunk_;
  // Recordings are numbered as they begin. Behind the boxes of one's start or end others may begin and end.
  std::uint64_t begun_ = 0;
  std::uint64_t underWay_ = 0;                          // 0 = none
  std::uint64_t filed_ = 0;                             // the newest that has been filed
  std::map<std::int32_t, std::uint64_t> newestOfCart_;  // the last that began in each cart
};

// Has the cart browser draw the wall again, if it is open.
platform::Hook<void()>& WallChangedHook();

}  // namespace vorda
