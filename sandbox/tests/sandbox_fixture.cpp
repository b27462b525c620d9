#include "sandbox_fixture.h"

#include "crypto/digest.h"
#include "crypto/random.h"

namespace sandbox::testing {

std::string Answer::value() const {
  return return_element().text().get();
}

pugi::xml_node Answer::return_element() const {
  return document.document_element().first_child().first_child().first_child();
}

pugi::xml_node Answer::referenced(pugi::xml_node reference) const {
  const std::string id = std::string(reference.attribute("href").value()).substr(1);
  return document.document_element().first_child().find_child_by_attribute("multiRef", "id",
                                                                           id.c_str());
}

std::string Answer::fault_string() const {
  return document.document_element()
      .first_child()
      .child("soapenv:Fault")
      .child("faultstring")
      .text()
      .get();
}

pugi::xml_node Answer::application_fault() const {
  const pugi::xml_node entry = document.document_element().first_child().first_child();
  return std::string_view(entry.name()) == "ns1:Fault" ? entry : pugi::xml_node();
}

std::string arg(std::string_view name, std::string_view type, std::string_view text) {
  return "<" + std::string(name) + " XI:type=\"XS:" + std::string(type) + "\">" +
         std::string(text) + "</" + std::string(name) + ">";
}

void SandboxTest::SetUp() {
  data_dir_ = std::filesystem::temp_directory_path() / ("telvane-sandbox-test-" + random_hex(8));
  options_.data_dir = data_dir_;
  options_.version = "9.8.7.6";
  start_server();
}

void SandboxTest::TearDown() {
  client_.reset();
  server_.reset();
  std::filesystem::remove_all(data_dir_);
}

void SandboxTest::start_server() {
  server_ = std::make_unique<SandboxServer>(options_);
  const int port = server_->start();
  client_ = std::make_unique<httplib::Client>("127.0.0.1", port);
}

Answer SandboxTest::post(std::string_view path, std::string_view body) {
  Answer answer;
  httplib::Headers headers;
  if (!cookie_.empty()) headers.emplace("Cookie", cookie_);
  const auto result =
      client_->Post(std::string(path), headers, std::string(body), "text/xml; charset=UTF-8");
  if (!result) {
    ADD_FAILURE() << "no HTTP answer from " << path;
    return answer;
  }
  answer.status = result->status;
  answer.body = result->body;
  answer.set_cookie = result->get_header_value("Set-Cookie");
  answer.document.load_string(answer.body.c_str());
  return answer;
}

std::string SandboxTest::envelope(std::string_view ns, std::string_view operation,
                                  std::string_view arguments) {
  return "<S:Envelope\r\n\txmlns:S=\"http://schemas.xmlsoap.org/soap/envelope/\"\r\n"
         "\txmlns:XS=\"http://www.w3.org/2001/XMLSchema\"\r\n"
         "\txmlns:XI=\"http://www.w3.org/2001/XMLSchema-instance\"\r\n"
         "\txmlns:a=\"" +
         std::string(ns) + "\"><S:Body><a:" + std::string(operation) + ">" +
         std::string(arguments) + "</a:" + std::string(operation) + "></S:Body></S:Envelope>";
}

Answer SandboxTest::call(std::string_view service, std::string_view ns, std::string_view operation,
                         std::string_view arguments) {
  return post("/services/" + std::string(service), envelope(ns, operation, arguments));
}

void SandboxTest::login() {
  const std::string challenge = call("Login", kLoginNs, "getChallenge").value();
  secret_ = md5_hex(challenge + md5_hex("demo"));
  const Answer answer = call("Login", kLoginNs, "userLogin",
                             arg("challenge", "string", challenge) +
                                 arg("response", "string", md5_hex("0" + secret_)) +
                                 arg("username", "string", "demo@example.com"));
  ASSERT_EQ(answer.status, 200) << answer.body;
  token_ = answer.value();
  cookie_ = answer.set_cookie.substr(0, answer.set_cookie.find(';'));
  counter_ = 1;
}

std::string SandboxTest::key_with(std::int64_t counter) const {
  const std::string n = std::to_string(counter);
  return arg("key", "string", token_ + ":" + n + ":" + md5_hex(n + secret_));
}

std::string SandboxTest::key() {
  return key_with(counter_++);
}

std::string SandboxTest::key_text() {
  const std::string n = std::to_string(counter_++);
  return token_ + ":" + n + ":" + md5_hex(n + secret_);
}

}  // namespace sandbox::testing
