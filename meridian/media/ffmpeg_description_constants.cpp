#include "meridian/media/ffmpeg_description_constants.h"

#include <memory>
#include <utility>

#include "meridian/base/no_destructor.h"
#include "meridian/base/shared_slot.h"

namespace meridian::inline v0_2 {
namespace {

class SettableText {
 public:
  explicit SettableText(std::string text) : slot_(std::make_shared<const std::string>(std::move(text))) {}
  [[nodiscard]] std::string get() { return *slot_.get(); }
  void set(std::string text) { slot_.set(std::make_shared<const std::string>(std::move(text))); }

 private:
  SharedSlot<const std::string> slot_;
};

struct Texts {
  SettableText utilityName{"FFmpeg Utility"};
  SettableText maskName{"Video"};
  SettableText encoderMetadataKey{"encoder"};
  SettableText handlerNameMetadataKey{"handler name"};
};

Texts& texts() {
  static NoDestructor<Texts> instance;
  return *instance;
}

}  // namespace

std::string FFmpegDescriptionConstants::utilityName() { return texts().utilityName.get(); }
void FFmpegDescriptionConstants::setUtilityName(std::string name) { texts().utilityName.set(std::move(name)); }

std::string FFmpegDescriptionConstants::maskName() { return texts().maskName.get(); }
void FFmpegDescriptionConstants::setMaskName(std::string name) { texts().maskName.set(std::move(name)); }

std::string FFmpegDescriptionConstants::encoderMetadataKey() { return texts().encoderMetadataKey.get(); }
void FFmpegDescriptionConstants::setEncoderMetadataKey(std::string key) {
  texts().encoderMetadataKey.set(std::move(key));
}

std::string FFmpegDescriptionConstants::handlerNameMetadataKey() { return texts().handlerNameMetadataKey.get(); }
void FFmpegDescriptionConstants::setHandlerNameMetadataKey(std::string key) {
  texts().handlerNameMetadataKey.set(std::move(key));
}

}  // namespace meridian::inline v0_2
