// The call log of the recording context.
#include "platform/recording_context.h"

#include "platform/format.h"
#include "platform/image.h"

namespace scrivlet {

std::string RecordingContext::Call::str() const {
  std::string s = name;
  for (double a : args) s += cformat(" %g", a);
  if (!text.empty()) s += " \"" + text + "\"";
  return s;
}

std::string RecordingContext::log() const {
  std::string s;
  for (const Call& c : calls_) s += c.str() + "\n";
  return s;
}

std::vector<std::string> RecordingContext::names() const {
  std::vector<std::string> result;
  for (const Call& c : calls_) result.push_back(c.name);
  return result;
}

void RecordingContext::setShadow(QnSize offset, double blur, const QnColor& c) {
  std::vector<double> args{offset.width, offset.height, blur};
  for (double v : components(c)) args.push_back(v);
  add("setShadow", std::move(args));
}

void RecordingContext::drawImage(const QnImage& image, const QnRect& r) {
  add("drawImage", {double(image.pixelWidth()), double(image.pixelHeight()), r.origin.x, r.origin.y,
                    r.size.width, r.size.height});
}

void RecordingContext::showText(const std::string& text, QnPoint p, double size, const QnColor& c) {
  std::vector<double> args{p.x, p.y, size};
  for (double v : components(c)) args.push_back(v);
  add("showText", std::move(args), text);
}

std::vector<double> RecordingContext::components(const QnColor& c) {
  std::vector<double> result;
  for (size_t i = 0; i < c.numberOfComponents(); ++i) result.push_back(c.component(i));
  return result;
}

void RecordingContext::add(const char* name, std::vector<double> args, std::string text) {
  calls_.push_back({name, std::move(args), std::move(text)});
}

}  // namespace scrivlet
