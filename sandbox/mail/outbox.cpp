#include "mail/outbox.h"

#include <chrono>
#include <cstdio>
#include <fstream>
#include <stdexcept>

#include "crypto/random.h"

namespace sandbox {
namespace {

// "Mon, 15 Jan 2024 09:00:00 +0000"
std::string rfc5322_date(std::chrono::system_clock::time_point now) {
  using namespace std::chrono;
  static constexpr const char* kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  static constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                            "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const auto day = floor<days>(now);
  const year_month_day date{day};
  const hh_mm_ss clock{floor<seconds>(now - day)};
  char text[40];
  std::snprintf(text, sizeof text, "%s, %02u %s %04d %02d:%02d:%02d +0000",
                kDays[weekday{day}.c_encoding()], unsigned{date.day()},
                kMonths[unsigned{date.month()} - 1], int{date.year()},
                static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()));
  return text;
}

// Lines end in CRLF whatever the sender used.
std::string crlf_lines(const std::string& text) {
  std::string out;
  out.reserve(text.size() + text.size() / 32);
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') continue;
    if (text[i] == '\r' || text[i] == '\n') {
      out += "\r\n";
    } else {
      out += text[i];
    }
  }
  return out;
}

}  // namespace

std::string write_to_outbox(const std::filesystem::path& data_dir, const OutgoingMessage& message) {
  const std::string id = random_hex(16);
  const std::filesystem::path folder = data_dir / "outbox";
  std::filesystem::create_directories(folder);
  const std::filesystem::path file = folder / (id + ".eml");
  std::filesystem::path partial = file;
  partial += ".part";
  {
    std::ofstream out(partial, std::ios::binary | std::ios::trunc);
    out << "From: " << message.from << "\r\n"
        << "To: " << message.to << "\r\n"
        << "Subject: " << message.subject << "\r\n"
        << "Date: " << rfc5322_date(std::chrono::system_clock::now()) << "\r\n"
        << "Message-ID: <" << id << "@telvane-sandbox.invalid>\r\n"
        << "MIME-Version: 1.0\r\n"
        << "Content-Type: text/plain; charset=utf-8\r\n"
        << "Content-Transfer-Encoding: 8bit\r\n"
        << "\r\n"
        << crlf_lines(message.body);
    out.close();
    if (!out) {
      std::error_code ignored;
      std::filesystem::remove(partial, ignored);
      throw std::runtime_error("the sandbox could not write the message");
    }
  }
  // Renamed only once complete, so a reader of the outbox never sees half a message.
  std::filesystem::rename(partial, file);
  return id;
}

}  // namespace sandbox
