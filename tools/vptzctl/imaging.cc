#include "command.h"
#include "describe.h"
#include "session.h"

namespace vptzctl {
namespace {

// The values of which exactly one may be given.
constexpr const char* kNumbers[] = {"--brightness", "--contrast", "--sharpness", "--backlight", "--auto-focus"};

Row ValueRow(const std::string& name, const VptzValue& value, const VptzRange& range) {
  return {name, {{"value", From(value), ""}, {"range", From(range), ""}}};
}

// Live values; their ranges come from the database.
ExitCode ImageShow(Session& session) {
  VptzMediaData& media = session.Media();
  const int status =
      session.client().QueryMediaProfiles(session.camera().id, media.node, &media, session.timeout);
  session.result.table = {ValueRow("brightness", media.brightness, media.brightness_range),
                          ValueRow("contrast", media.contrast, media.contrast_range),
                          ValueRow("sharpness", media.sharpness, media.sharpness_range),
                          ValueRow("backlight", media.backlight_mode, {}),
                          ValueRow("auto_focus", media.auto_focus, {})};
  return session.Finish(status);
}

// The option that is given alone, so that the operation for it does; null when
// several are given.
const char* OnlyNumber(const Session& session) {
  const char* only = nullptr;
  for (const char* name : kNumbers) {
    if (!session.Given(name)) continue;
    if (only != nullptr) return nullptr;
    only = name;
  }
  if (only == nullptr || !session.Given("--auto-focus-mode")) return only;
  return only == std::string("--auto-focus") ? only : nullptr;
}

std::string FocusMode(const Session& session) {
  return session.Given("--auto-focus-mode") ? session.Text("--auto-focus-mode") : "DEFAULT";
}

int SetAll(Session& session, unsigned int profile) {
  return session.camera().SetImagingSettings(session.Number("--brightness"), session.Number("--contrast"),
                                             session.Number("--sharpness"), session.Number("--backlight"),
                                             session.Number("--auto-focus"), FocusMode(session), profile,
                                             session.timeout);
}

int SetOne(Session& session, const std::string& name, unsigned int profile) {
  CVptzDevice& camera = session.camera();
  const double value = session.Number(name);
  if (name == "--brightness") return camera.SetBrightness(value, profile, session.timeout);
  if (name == "--contrast") return camera.SetContrast(value, profile, session.timeout);
  if (name == "--sharpness") return camera.SetSharpness(value, profile, session.timeout);
  if (name == "--backlight") return camera.SetBacklightMode(value, profile, session.timeout);
  return camera.SetAutoFocusMode(value, FocusMode(session), profile, session.timeout);
}

int Set(Session& session, unsigned int profile) {
  const char* only = OnlyNumber(session);
  return only ? SetOne(session, only, profile) : SetAll(session, profile);
}

// One profile after the other, so that a refusal is told with its status; the
// library's own way of setting all would only tell that there was one.
ExitCode ImageSet(Session& session) {
  if (!session.Flag("--all")) return session.Finish(Set(session, session.MediaIndex()));
  session.result.SetArgument("profile", Value());
  int status = 0;
  for (unsigned int i = 1; i <= session.camera().media_list.size() && status == 0; ++i)
    status = Set(session, i);
  return session.Finish(status);
}

Argument Setting(const std::string& name, const std::string& help) { return Number(name, "N", "", help); }

Argument MediaProfile() { return Profile("media profile"); }

Command SetRow() {
  return {"image",
          "set",
          "Sets the image. Values that are not given stay as they are.",
          {"SetImagingSettings", "SetBrightness", "SetContrast", "SetSharpness", "SetBacklightMode",
           "SetAutoFocusMode"},
          {Camera(), Setting("--brightness", "brightness, on the service's scale"),
           Setting("--contrast", "contrast, on the service's scale"),
           Setting("--sharpness", "sharpness, on the service's scale"),
           Setting("--backlight", "backlight compensation, a number of the service's")
               .Words({{"off", 0}, {"on", 1}}),
           Setting("--auto-focus", "automatic focus, a number of the service's")
               .Words({{"off", 0}, {"on", 1}, {"manual", 0}, {"auto", 1}}),
           Text("--auto-focus-mode", "MODE", "how the automatic focus works, a text of the service's")
               .Known({"AUTO", "MANUAL", "DEFAULT"}),
           MediaProfile(), Flag("--all", "set every media profile of the camera").Excludes({kProfile})},
          {"--brightness", "--contrast", "--sharpness", "--backlight", "--auto-focus", "--auto-focus-mode"},
          ImageSet};
}

}  // namespace

std::vector<Command> ImagingCommands() {
  return {
      {"image",
       "show",
       "Shows the image settings of a media profile.",
       {"QueryMediaProfiles"},
       {Camera(), MediaProfile()},
       {},
       ImageShow},
      SetRow(),
  };
}

}  // namespace vptzctl
