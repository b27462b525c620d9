#include "viewers/viewer_pages.h"

#include <httplib.h>

#include <map>
#include <optional>
#include <vector>

#include "crypto/random.h"
#include "dispatch/cookie_header.h"
#include "store/record_columns.h"
#include "store/response_store.h"
#include "viewers/page_html.h"
#include "viewers/page_view.h"

namespace sandbox {
namespace {

constexpr std::string_view kLivePrefix = "/live/";
constexpr std::size_t kMaxFormBytes = 64 * 1024;
constexpr int kCookieSeconds = 365 * 24 * 3600;

// The deployment guid and what follows it: "/live/D/" is {D, ""}, "/live/D/poll" {D, "poll"}.
struct LivePath {
  std::string deployment;
  std::string action;
  bool valid = false;
};

LivePath live_path(std::string_view path) {
  path.remove_prefix(kLivePrefix.size());
  const auto slash = path.find('/');
  LivePath parsed{std::string(path.substr(0, slash)), "", true};
  if (slash != std::string_view::npos) parsed.action = path.substr(slash + 1);
  parsed.valid = !parsed.deployment.empty() && parsed.action.find('/') == std::string::npos;
  return parsed;
}

void send_html(httplib::Response& response, int status, std::string html) {
  response.status = status;
  response.set_header("Cache-Control", "no-store");
  // The pages need no script, style or frame from anywhere.
  response.set_header("Content-Security-Policy", "default-src 'none'; form-action 'self'");
  response.set_content(std::move(html), "text/html; charset=utf-8");
}

Visit visit_of(const httplib::Request& request) {
  const std::string cookies = request.get_header_value("Cookie");
  return Visit{std::string(cookie_value(cookies, kViewerCookieName).value_or("")),
               request.get_header_value("User-Agent"),
               request.get_header_value("Accept-Language"),
               request.remote_addr,
               "",
               now_ms()};
}

std::string viewer_cookie(std::string_view viewer) {
  return std::string(kViewerCookieName) + "=" + std::string(viewer) +
         "; Path=/live/; Max-Age=" + std::to_string(kCookieSeconds) + "; HttpOnly; SameSite=Lax";
}

// Fields of a form body, the query string's standing in for missing ones.
std::map<std::string, std::string> form_fields(const httplib::Request& request,
                                               const std::string& body) {
  httplib::Params params;
  httplib::detail::parse_query_text(body, params);
  std::map<std::string, std::string> fields;
  for (const auto& [name, value] : params) fields.emplace(name, value);
  for (const auto& [name, value] : request.params) fields.emplace(name, value);
  return fields;
}

std::string field(const std::map<std::string, std::string>& fields, const std::string& name) {
  const auto found = fields.find(name);
  return found == fields.end() ? std::string() : found->second;
}

struct Thanks {
  std::string title;
  std::string text;
};

// Runs the form's action for its viewer; nothing for a beacon, which gets no page.
std::optional<Thanks> take_form(Database& db, const Page& page, std::string_view action,
                                const std::map<std::string, std::string>& fields) {
  const std::string hit = field(fields, "hit");
  const std::int64_t now = now_ms();
  if (action == "close") {
    leave_page(db, page, hit, now);
    return std::nullopt;
  }
  if (action == "register") {
    register_viewer(db, page, hit,
                    {field(fields, "email"), field(fields, "firstName"), field(fields, "lastName"),
                     field(fields, "password")});
    return Thanks{"Registered", "Thank you for registering."};
  }
  if (action == "poll") {
    answer_poll(db, page, hit, field(fields, "poll"), field(fields, "answer"), now);
    return Thanks{"Vote counted", "Thank you for your vote."};
  }
  if (action == "survey") {
    answer_survey(db, page, hit, field(fields, "survey"), fields, now);
    return Thanks{"Answers sent", "Thank you for your answers."};
  }
  if (action == "question") {
    ask_question(db, page, hit, field(fields, "question"), field(fields, "name"),
                 field(fields, "location"), now);
    return Thanks{"Question sent", "Thank you: the presenter has your question."};
  }
  throw FormRefused("This page has no such form");
}

}  // namespace

bool ViewerPages::serves(std::string_view path) {
  return path.starts_with(kLivePrefix);
}

void ViewerPages::handle_get(const httplib::Request& request, httplib::Response& response) {
  const LivePath path = live_path(collapse_slashes(request.path));
  if (!path.valid || (!path.action.empty() && path.action != "close")) {
    return send_html(response, 404, not_found_html());
  }
  const Visit visit = visit_of(request);
  std::optional<std::string> html;
  int status = 200;
  std::string set_cookie;
  dispatcher_.with_store([&](Database& db) {
    const auto page = deployed_page(db, path.deployment);
    if (!page) return;
    if (path.action == "close") {
      try {
        leave_page(db, *page, request.get_param_value("hit"), visit.at);
        html = message_html(*page, "Goodbye", "Thank you for watching.", "");
      } catch (const FormRefused& refused) {
        status = 400;
        html = message_html(*page, "Not accepted", refused.what(), "");
      }
      return;
    }
    const OpenedPage opened = open_page(db, *page, visit, random_hex(16));
    if (!opened.cookie_came_back) set_cookie = viewer_cookie(opened.viewer);
    const bool registered = viewer_registrant(db, opened.viewer, page->project_guid).has_value();
    const PageState state{opened.hit, !registered && registration_required(db, page->project_guid),
                          registered, shown_questions(db, page->template_guid)};
    html = page_html(*page, page_content(db, page->template_guid), state);
  });
  if (!html) return send_html(response, 404, not_found_html());
  if (!set_cookie.empty()) response.set_header("Set-Cookie", set_cookie);
  send_html(response, status, std::move(*html));
}

void ViewerPages::handle_post(const httplib::Request& request, const std::string& body,
                              httplib::Response& response) {
  const LivePath path = live_path(collapse_slashes(request.path));
  if (!path.valid) return send_html(response, 404, not_found_html());
  if (body.size() > kMaxFormBytes) {
    response.status = 413;
    return;
  }
  const auto fields = form_fields(request, body);
  std::optional<std::string> html;
  bool found = false;
  int status = 200;
  dispatcher_.with_store([&](Database& db) {
    const auto page = deployed_page(db, path.deployment);
    if (!page) return;
    found = true;
    try {
      if (const auto thanks = take_form(db, *page, path.action, fields)) {
        html = message_html(*page, thanks->title, thanks->text, field(fields, "hit"));
      }
    } catch (const FormRefused& refused) {
      status = 400;
      html = message_html(*page, "Not accepted", refused.what(), "");
    }
  });
  if (!found) return send_html(response, 404, not_found_html());
  if (!html) {
    response.status = 204;
    return;
  }
  send_html(response, status, std::move(*html));
}

}  // namespace sandbox
