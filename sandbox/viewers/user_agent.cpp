#include "viewers/user_agent.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace sandbox {
namespace {

struct BrowserToken {
  std::string_view token;  // the product token whose version follows it
  std::string_view type;
};

// Order matters: Edge and Opera also say Chrome, Chrome also says Safari.
constexpr std::array kBrowsers{BrowserToken{"curl/", "curl"},
                               BrowserToken{"Wget/", "Wget"},
                               BrowserToken{"Edg/", "Edge"},
                               BrowserToken{"Edge/", "Edge"},
                               BrowserToken{"OPR/", "Opera"},
                               BrowserToken{"Firefox/", "Firefox"},
                               BrowserToken{"Chromium/", "Chromium"},
                               BrowserToken{"HeadlessChrome/", "Chrome"},
                               BrowserToken{"Chrome/", "Chrome"},
                               BrowserToken{"CriOS/", "Chrome"},
                               BrowserToken{"Version/", "Safari"},
                               BrowserToken{"MSIE ", "Internet Explorer"},
                               BrowserToken{"rv:", "Internet Explorer"}};

struct SystemToken {
  std::string_view token;
  std::string_view name;
};

// Android says Linux, iOS says Mac OS X.
constexpr std::array kSystems{SystemToken{"Windows", "Windows"}, SystemToken{"Android", "Android"},
                              SystemToken{"iPhone", "iOS"},      SystemToken{"iPad", "iOS"},
                              SystemToken{"CrOS", "ChromeOS"},   SystemToken{"Mac OS X", "macOS"},
                              SystemToken{"Macintosh", "macOS"}, SystemToken{"Linux", "Linux"},
                              SystemToken{"X11", "Linux"}};

// The leading digits of `text`, at most six of them.
std::int32_t leading_number(std::string_view text) {
  std::int32_t number = 0;
  for (std::size_t i = 0;
       i < text.size() && i < 6 && std::isdigit(static_cast<unsigned char>(text[i])); ++i) {
    number = number * 10 + (text[i] - '0');
  }
  return number;
}

bool is_browser(std::string_view user_agent, const BrowserToken& browser) {
  if (user_agent.find(browser.token) == std::string_view::npos) return false;
  // "Version/" marks Safari only beside a Safari token; "rv:" marks Internet Explorer only
  // beside Trident.
  if (browser.token == "Version/") return user_agent.find("Safari/") != std::string_view::npos;
  if (browser.token == "rv:") return user_agent.find("Trident/") != std::string_view::npos;
  return true;
}

}  // namespace

BrowserInfo parse_user_agent(std::string_view user_agent) {
  BrowserInfo info{"Other", 0, "Unknown"};
  if (user_agent.empty()) info.type = "Unknown";
  for (const BrowserToken& browser : kBrowsers) {
    if (!is_browser(user_agent, browser)) continue;
    info.type = browser.type;
    const auto at = user_agent.find(browser.token) + browser.token.size();
    info.version = leading_number(user_agent.substr(at));
    break;
  }
  for (const SystemToken& system : kSystems) {
    if (user_agent.find(system.token) != std::string_view::npos) {
      info.operating_system = system.name;
      break;
    }
  }
  return info;
}

LanguageInfo parse_accept_language(std::string_view header) {
  const std::string_view first = header.substr(0, header.find_first_of(",;"));
  const auto begin = first.find_first_not_of(' ');
  if (begin == std::string_view::npos) return {};
  const std::string_view tag = first.substr(begin, first.find_last_not_of(' ') - begin + 1);
  const bool well_formed = tag.size() <= 35 && std::all_of(tag.begin(), tag.end(), [](char c) {
                             return std::isalnum(static_cast<unsigned char>(c)) || c == '-';
                           });
  if (!well_formed || tag.empty() || tag.front() == '-') return {};

  LanguageInfo info;
  const auto dash = tag.find('-');
  for (char c : tag.substr(0, dash))
    info.language += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  if (dash == std::string_view::npos) return info;
  const std::string_view region = tag.substr(dash + 1, tag.find('-', dash + 1) - dash - 1);
  std::string upper;
  for (char c : region) upper += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  if (upper.size() == 2 && std::isalpha(static_cast<unsigned char>(upper[0])) &&
      std::isalpha(static_cast<unsigned char>(upper[1]))) {
    info.country = upper;
  }
  info.language += "-" + upper;
  return info;
}

}  // namespace sandbox
