#include "viewers/page_html.h"

#include "soap/xml_escape.h"

namespace sandbox {
namespace {

// Appends text escaped for HTML content and double-quoted attributes.
void add(std::string& out, std::string_view text) {
  append_escaped(out, text);
}

std::string escaped(std::string_view text) {
  std::string out;
  append_escaped(out, text);
  return out;
}

void open_document(std::string& out, std::string_view title) {
  out += "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"><title>";
  add(out, title);
  out += "</title></head>\n<body>\n";
}

void hidden(std::string& out, std::string_view name, std::string_view value) {
  out +=
      "<input type=\"hidden\" name=\"" + std::string(name) + "\" value=\"" + escaped(value) + "\">";
}

void open_form(std::string& out, const Page& page, std::string_view action, std::string_view hit) {
  out += "<form method=\"post\" action=\"" + escaped(page_path(page)) + std::string(action) + "\">";
  hidden(out, "hit", hit);
}

void registration_form(std::string& out, const Page& page, std::string_view hit) {
  out += "<section id=\"registration\"><h2>Register</h2>\n";
  open_form(out, page, "register", hit);
  out +=
      "<p><label>E-mail <input type=\"email\" name=\"email\" required></label></p>"
      "<p><label>First name <input name=\"firstName\"></label></p>"
      "<p><label>Last name <input name=\"lastName\"></label></p>"
      "<p><label>Password <input type=\"password\" name=\"password\"></label></p>"
      "<p><button type=\"submit\">Register</button></p></form></section>\n";
}

void poll_form(std::string& out, const Page& page, const PollDefinition& poll,
               std::string_view hit) {
  out += "<section class=\"poll\"><h2>";
  add(out, poll.question);
  out += "</h2>\n";
  open_form(out, page, "poll", hit);
  hidden(out, "poll", poll.guid);
  for (std::size_t id = 1; id <= poll.answers.size(); ++id) {
    out += "<p><label><input type=\"radio\" name=\"answer\" value=\"" + std::to_string(id) + "\"" +
           (id == 1 ? " required" : "") + "> ";
    add(out, poll.answers[id - 1]);
    out += "</label></p>";
  }
  out += "<p><button type=\"submit\">Vote</button></p></form></section>\n";
}

void survey_form(std::string& out, const Page& page, const SurveyDefinition& survey,
                 std::string_view hit) {
  out += "<section class=\"survey\"><h2>";
  add(out, survey.name);
  out += "</h2>\n";
  open_form(out, page, "survey", hit);
  hidden(out, "survey", survey.guid);
  for (const SurveyQuestionDefinition& question : survey.questions) {
    const std::string field = "q" + std::to_string(question.seq_no);
    out += "<fieldset><legend>";
    add(out, question.text);
    out += "</legend>";
    if (question.choices.empty()) {
      out += "<textarea name=\"" + field + "\" rows=\"3\" cols=\"40\"></textarea>";
    }
    for (std::size_t id = 1; id <= question.choices.size(); ++id) {
      out += "<label><input type=\"radio\" name=\"" + field + "\" value=\"" + std::to_string(id) +
             "\"> ";
      add(out, question.choices[id - 1]);
      out += "</label> ";
    }
    out += "</fieldset>\n";
  }
  out += "<p><button type=\"submit\">Send</button></p></form></section>\n";
}

void question_board(std::string& out, const Page& page, const QuestionFormDefinition& form,
                    const PageState& state) {
  out += "<section id=\"questions\"><h2>";
  add(out, form.label);
  out += "</h2>\n<ul>";
  for (const ShownQuestion& question : state.questions) {
    out += "<li><p>";
    add(out, question.text);
    if (!question.name.empty()) {
      out += " <em>(";
      add(out, question.name);
      out += ")</em>";
    }
    out += "</p>";
    if (!question.answer.empty()) {
      out += "<p><strong>Answer:</strong> ";
      add(out, question.answer);
      out += "</p>";
    }
    out += "</li>";
  }
  out += "</ul>\n";
  open_form(out, page, "question", state.hit);
  out += "<p><label>Your question <textarea name=\"question\" rows=\"3\" cols=\"40\" maxlength=\"" +
         std::to_string(form.max_length) +
         "\" required></textarea></label></p>"
         "<p><label>Name <input name=\"name\"></label></p>"
         "<p><label>Location <input name=\"location\"></label></p>"
         "<p><button type=\"submit\">Ask</button></p></form></section>\n";
}

void leave_link(std::string& out, const Page& page, std::string_view hit) {
  out += "<p><a id=\"close\" href=\"" + escaped(page_path(page)) + "close?hit=" + escaped(hit) +
         "\">Leave this page</a></p>\n";
}

}  // namespace

std::string page_path(const Page& page) {
  return "/live/" + page.deployment_guid + "/";
}

std::string page_html(const Page& page, const PageContent& content, const PageState& state) {
  std::string out;
  open_document(out, page.name);
  out += "<h1>";
  add(out, page.name);
  out += "</h1>\n";
  for (const std::string& text : content.texts) {
    out += "<p>";
    add(out, text);
    out += "</p>\n";
  }
  if (state.asks_registration) registration_form(out, page, state.hit);
  if (state.registered) out += "<p id=\"registered\">You are registered for this event.</p>\n";
  for (const PollDefinition& poll : content.polls) poll_form(out, page, poll, state.hit);
  for (const SurveyDefinition& survey : content.surveys) survey_form(out, page, survey, state.hit);
  if (content.question_form) question_board(out, page, *content.question_form, state);
  leave_link(out, page, state.hit);
  out += "</body></html>\n";
  return out;
}

std::string message_html(const Page& page, std::string_view title, std::string_view text,
                         std::string_view hit) {
  std::string out;
  open_document(out, title);
  out += "<h1>";
  add(out, title);
  out += "</h1>\n<p>";
  add(out, text);
  out += "</p>\n<p><a href=\"" + escaped(page_path(page)) + "\">Back to ";
  add(out, page.name);
  out += "</a></p>\n";
  if (!hit.empty()) leave_link(out, page, hit);
  out += "</body></html>\n";
  return out;
}

std::string not_found_html() {
  std::string out;
  open_document(out, "Not found");
  out += "<h1>Not found</h1>\n<p>No page is deployed at this address.</p>\n</body></html>\n";
  return out;
}

}  // namespace sandbox
