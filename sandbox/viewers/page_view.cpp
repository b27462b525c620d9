#include "viewers/page_view.h"

#include <algorithm>
#include <charconv>

#include "crypto/digest.h"
#include "crypto/random.h"
#include "store/database.h"
#include "store/registrant_store.h"
#include "store/response_store.h"
#include "viewers/user_agent.h"
#include "viewers/viewer_text.h"

namespace sandbox {
namespace {

constexpr std::size_t kMaxNameChars = 100;

bool is_viewer_id(std::string_view cookie) {
  return cookie.size() == 32 && std::all_of(cookie.begin(), cookie.end(), [](char c) {
           return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
         });
}

Hit require_hit(Database& db, const Page& page, std::string_view hit) {
  auto found = find_hit(db, page.template_guid, hit);
  if (!found)
    throw FormRefused("This form belongs to a visit of another page: open the page again");
  return std::move(*found);
}

// Small numbers only: ids of answers on a page.
std::size_t choice_id(std::string_view text, std::size_t count) {
  std::size_t id = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), id);
  if (error != std::errc() || end != text.data() + text.size() || id == 0 || id > count) {
    throw FormRefused("Please pick one of the answers");
  }
  return id;
}

bool plausible_email(std::string_view email) {
  const auto at = email.find('@');
  return !email.empty() && email.size() <= 254 && at != std::string_view::npos && at > 0 &&
         email.find('@', at + 1) == std::string_view::npos &&
         email.find('.', at) != std::string_view::npos &&
         email.find_first_of(" <>\"") == std::string_view::npos;
}

}  // namespace

OpenedPage open_page(Database& db, const Page& page, const Visit& visit,
                     std::string_view fresh_viewer) {
  OpenedPage opened;
  opened.cookie_came_back = is_viewer_id(visit.viewer_cookie);
  opened.viewer = opened.cookie_came_back ? visit.viewer_cookie : std::string(fresh_viewer);
  const BrowserInfo browser = parse_user_agent(viewer_text(visit.user_agent, 512));
  const LanguageInfo language = parse_accept_language(viewer_text(visit.accept_language, 256));
  const ViewerClient client{viewer_text(visit.ip, 64),
                            viewer_text(visit.host_name.empty() ? visit.ip : visit.host_name, 253),
                            browser.type,
                            browser.version,
                            browser.operating_system,
                            language.language,
                            language.country,
                            opened.cookie_came_back};
  Transaction transaction(db);
  note_viewer(db, opened.viewer, visit.at);
  opened.hit = insert_hit(db, page, opened.viewer, client, visit.at);
  transaction.commit();
  return opened;
}

void leave_page(Database& db, const Page& page, std::string_view hit, std::int64_t at) {
  require_hit(db, page, hit);
  close_hit(db, hit, at);
}

std::string register_viewer(Database& db, const Page& page, std::string_view hit,
                            const Registration& form) {
  const Hit visit = require_hit(db, page, hit);
  if (viewer_registrant(db, visit.viewer, page.project_guid)) {
    throw FormRefused("You are registered already");
  }
  const std::string email = viewer_text(form.email, 254);
  if (!plausible_email(email)) throw FormRefused("Please give a valid e-mail address");
  if (registrant_email_taken(db, page.project_guid, email)) {
    throw FormRefused("Someone has registered with that e-mail address already");
  }
  NewRegistrant registrant;
  registrant.guid = random_guid();
  registrant.project_guid = page.project_guid;
  registrant.email = email;
  registrant.first_name = viewer_text(form.first_name, kMaxNameChars);
  registrant.last_name = viewer_text(form.last_name, kMaxNameChars);
  registrant.password_md5 = form.password.empty() ? "" : md5_hex(form.password);
  registrant.user_ip = visit.client.ip;
  registrant.user_host_name = visit.client.host_name;
  Transaction transaction(db);
  insert_registrant(db, registrant);
  link_registrant(db, visit.viewer, page.project_guid, registrant.guid, visit.client);
  transaction.commit();
  return registrant.guid;
}

void answer_poll(Database& db, const Page& page, std::string_view hit, std::string_view poll,
                 std::string_view answer_id, std::int64_t at) {
  const Hit visit = require_hit(db, page, hit);
  const PageContent content = page_content(db, page.template_guid);
  const PollDefinition* definition = content.poll(poll);
  if (!definition) throw FormRefused("This page has no such poll");
  const std::size_t id = choice_id(answer_id, definition->answers.size());
  replace_poll_response(db, page.template_guid, definition->guid, static_cast<std::int32_t>(id),
                        visit.viewer, at);
}

void answer_survey(Database& db, const Page& page, std::string_view hit, std::string_view survey,
                   const std::map<std::string, std::string>& answers, std::int64_t at) {
  const Hit visit = require_hit(db, page, hit);
  const PageContent content = page_content(db, page.template_guid);
  const SurveyDefinition* definition = content.survey(survey);
  if (!definition) throw FormRefused("This page has no such survey");
  std::vector<SurveyAnswerRow> rows;
  for (const SurveyQuestionDefinition& question : definition->questions) {
    const auto given = answers.find("q" + std::to_string(question.seq_no));
    const std::string text = given == answers.end() ? "" : viewer_text(given->second, 2000, true);
    SurveyAnswerRow row{question.guid, "", ""};
    if (!text.empty() && question.choices.empty()) {
      row.answer_guid = question.free_answer_guid();
      row.answer_txt = text;
    } else if (!text.empty()) {
      const std::size_t id = choice_id(text, question.choices.size());
      row.answer_guid = question.choice_guid(id);
      row.answer_txt = question.choices[id - 1];
    }
    rows.push_back(std::move(row));
  }
  replace_survey_responses(db, page.template_guid, definition->guid, rows, visit.viewer, at);
}

void ask_question(Database& db, const Page& page, std::string_view hit, std::string_view question,
                  std::string_view name, std::string_view location, std::int64_t at) {
  const Hit visit = require_hit(db, page, hit);
  const PageContent content = page_content(db, page.template_guid);
  if (!content.question_form) throw FormRefused("This page takes no questions");
  const QuestionFormDefinition& form = *content.question_form;
  NewQuestion entry{viewer_text(question, form.max_length, true),
                    viewer_text(name, kMaxNameChars),
                    viewer_text(location, kMaxNameChars),
                    form.label,
                    form.moderated ? "new" : "approved",
                    visit.client.ip,
                    visit.client.host_name};
  if (entry.text.empty()) throw FormRefused("Please write a question");
  insert_question(db, page.template_guid, visit.viewer, entry, at);
}

}  // namespace sandbox
