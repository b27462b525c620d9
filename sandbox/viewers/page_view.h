#pragma once

#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>

#include "store/viewing_store.h"
#include "viewers/page_content.h"

namespace sandbox {

class Database;

inline constexpr std::string_view kViewerCookieName = "TelvaneViewer";

// One request for a page, as a browser made it. Real requests and simulated viewers both
// come through here, so that reports cannot tell them apart.
struct Visit {
  std::string viewer_cookie;  // the TelvaneViewer cookie as it came back, or empty
  std::string user_agent;
  std::string accept_language;
  std::string ip;
  std::string host_name;  // never looked up: what the caller was told, else the IP
  std::int64_t at = 0;    // ms since the epoch, UTC
};

struct OpenedPage {
  std::string viewer;
  std::string hit;
  bool cookie_came_back = false;  // otherwise the answer must set the cookie
};

// Records a hit; a viewer whose cookie did not come back becomes `fresh_viewer`.
OpenedPage open_page(Database& db, const Page& page, const Visit& visit,
                     std::string_view fresh_viewer);

// A form that cannot be taken as it came; the text is for the viewer.
class FormRefused : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct Registration {
  std::string email;
  std::string first_name;
  std::string last_name;
  std::string password;
};

// Each of these acts for the viewer of the page's hit `hit` and throws FormRefused for a
// hit, poll, survey or answer the page does not have, or a form it cannot take.
void leave_page(Database& db, const Page& page, std::string_view hit, std::int64_t at);
std::string register_viewer(Database& db, const Page& page, std::string_view hit,
                            const Registration& form);
void answer_poll(Database& db, const Page& page, std::string_view hit, std::string_view poll,
                 std::string_view answer_id, std::int64_t at);
// `answers` maps "q" and a question's sequence number to a choice id or a free text.
void answer_survey(Database& db, const Page& page, std::string_view hit, std::string_view survey,
                   const std::map<std::string, std::string>& answers, std::int64_t at);
void ask_question(Database& db, const Page& page, std::string_view hit, std::string_view question,
                  std::string_view name, std::string_view location, std::int64_t at);

}  // namespace sandbox
