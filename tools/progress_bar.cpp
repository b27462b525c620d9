#include "progress_bar.h"

#include <algorithm>
#include <cstdio>

namespace brenmoor::cli {
namespace {

std::string bytesText(double bytes) {
  static const char* const kUnits[] = {"B", "KiB", "MiB", "GiB", "TiB"};
  size_t unit = 0;
  while (bytes >= 1024 && unit + 1 < std::size(kUnits)) {
    bytes /= 1024;
    ++unit;
  }
  char text[32];
  std::snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.1f %s", bytes, kUnits[unit]);
  return text;
}

std::string durationText(double seconds) {
  const auto whole = static_cast<long>(seconds + 0.5);
  char text[32];
  if (whole >= 3600) {
    std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", whole / 3600, whole / 60 % 60, whole % 60);
  } else {
    std::snprintf(text, sizeof text, "%ld:%02ld", whole / 60, whole % 60);
  }
  return text;
}

// Long names would wrap the line, which then could not be redrawn in place.
std::string shortened(const std::string& name) {
  constexpr size_t kMax = 24;
  return name.size() <= kMax ? name : name.substr(0, kMax - 3) + "...";
}

}  // namespace

ProgressBar::ProgressBar(uint64_t totalBytes, bool terminal, std::ostream& out)
    : total_(totalBytes), terminal_(terminal), out_(out) {}

void ProgressBar::update(uint64_t done, const std::string& file) {
  done_ = std::min(done, total_);
  file_ = file;
  draw(false);
}

void ProgressBar::breakLine() {
  if (terminal_ && drawn_) out_ << '\n' << std::flush;
  drawn_ = false;
}

void ProgressBar::finish() {
  draw(true);
  breakLine();
}

void ProgressBar::draw(bool force) {
  const auto now = Clock::now();
  const int percent = total_ ? static_cast<int>(done_ * 100 / total_) : 100;
  if (terminal_) {
    if (!force && drawn_ && now - lastDrawn_ < std::chrono::milliseconds(100)) return;
    out_ << '\r' << line() << "\033[K" << std::flush;
  } else {
    if (percent / 10 == lastTenth_) return;  // that tenth's line is out already
    out_ << line() << '\n' << std::flush;
    lastTenth_ = percent / 10;
  }
  lastDrawn_ = now;
  drawn_ = true;
}

std::string ProgressBar::line() const {
  const double seconds = std::chrono::duration<double>(Clock::now() - start_).count();
  const double rate = seconds > 0 ? static_cast<double>(done_) / seconds : 0;
  const int percent = total_ ? static_cast<int>(done_ * 100 / total_) : 100;
  std::string text;
  if (terminal_) {
    constexpr int kWidth = 24;
    const int filled = percent * kWidth / 100;
    text = "[" + std::string(static_cast<size_t>(filled), '#') +
           std::string(static_cast<size_t>(kWidth - filled), '-') + "] ";
  }
  char head[8];
  std::snprintf(head, sizeof head, "%3d%%", percent);
  text += std::string(head) + "  " + bytesText(static_cast<double>(done_)) + " of " +
          bytesText(static_cast<double>(total_)) + "  " + bytesText(rate) + "/s";
  if (rate > 0 && done_ < total_) {
    text += "  " + durationText(static_cast<double>(total_ - done_) / rate) + " left";
  }
  return text + "  " + shortened(file_);
}

}  // namespace brenmoor::cli
