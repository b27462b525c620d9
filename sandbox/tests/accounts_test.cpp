#include <chrono>
#include <fstream>
#include <sstream>
#include <thread>

#include "crypto/digest.h"
#include "project_fixture.h"
#include "store/database.h"

namespace sandbox::testing {
namespace {

constexpr std::string_view kAccountsNs = "urn:telvane-accounts";

class AccountsTest : public ProjectTest {
 protected:
  Answer accounts(std::string_view operation, std::string_view arguments = "") {
    return call("Accounts", kAccountsNs, operation, arguments);
  }
  Answer create_user(std::string_view email, std::string_view password) {
    return accounts("createUserAccount",
                    arg("firstName", "string", "Ada") + arg("lastName", "string", "Lovelace") +
                        arg("email", "string", email) + arg("password", "string", password));
  }
  // The admin page's line for the account whose members include `email`: id and key.
  std::pair<std::string, std::string> account_of(std::string_view email) {
    const auto page = client_->Get("/admin/accounts");
    std::istringstream lines(page ? page->body : "");
    for (std::string line; std::getline(lines, line);) {
      if (line.find(email) == std::string::npos) continue;
      const auto tab = line.find('\t');
      return {line.substr(0, tab), line.substr(tab + 1, line.find('\t', tab + 1) - tab - 1)};
    }
    return {};
  }
  // Signs in as anyone; the answer of userLogin, with the session kept on success.
  Answer sign_in_as(std::string_view email, std::string_view password) {
    const std::string challenge = call("Login", kLoginNs, "getChallenge").value();
    const std::string secret = md5_hex(challenge + md5_hex(password));
    Answer answer = call("Login", kLoginNs, "userLogin",
                         arg("challenge", "string", challenge) +
                             arg("response", "string", md5_hex("0" + secret)) +
                             arg("username", "string", email));
    if (answer.status == 200) {
      token_ = answer.value();
      secret_ = secret;
      cookie_ = answer.set_cookie.substr(0, answer.set_cookie.find(';'));
      counter_ = 1;
    }
    return answer;
  }
  Answer registrants(std::string_view project, int max, std::string_view sort) {
    return main("getRegistrationList_Array", key() + arg("projectGuid", "string", project) +
                                                 arg("maxRecords", "int", std::to_string(max)) +
                                                 arg("sortBy", "string", sort));
  }
  Answer add_registrant(std::string_view project, std::string_view email, std::string_view last) {
    return main("addRegisteredUser",
                key() + arg("projectGuid", "string", project) + arg("userGuid", "string", "") +
                    arg("email", "string", email) + arg("firstName", "string", "F") +
                    arg("lastName", "string", last) + arg("password", "string", "pw") +
                    arg("customXML", "string", "&lt;x/&gt;") + arg("userIP", "string", "10.0.0.1") +
                    arg("userHostName", "string", "host"));
  }
  static std::vector<std::string> column(const Answer& list, const char* field) {
    std::vector<std::string> values;
    for (pugi::xml_node item : list.return_element().children()) {
      values.emplace_back(list.referenced(item).child(field).text().get());
    }
    return values;
  }
};

TEST_F(AccountsTest, UsersSignInChangeTheirPasswordAndAreCheckedByAccountKey) {
  EXPECT_EQ(create_user("ada@example.com", "first").value(), "true");
  EXPECT_EQ(fault_code(create_user("ADA@Example.com", "other")), "tv:DuplicateEmail");
  const auto [account, account_key] = account_of("ada@example.com");
  ASSERT_EQ(account_key.size(), 32u);
  EXPECT_EQ(accounts("getAccountNameFromKey", arg("accountKey", "string", account_key)).value(),
            "Ada Lovelace");

  const auto valid = [&](std::string_view password) {
    const std::string hash = md5_hex(md5_hex(password) + "ada@example.com" + account_key);
    return accounts("isUserAccountValid", arg("accountKey", "string", account_key) +
                                              arg("email", "string", "ada@example.com") +
                                              arg("passwordHash", "string", hash))
        .value();
  };
  EXPECT_EQ(valid("first"), "true");
  EXPECT_EQ(valid("wrong"), "false");

  ASSERT_EQ(sign_in_as("ada@example.com", "first").status, 200);
  EXPECT_EQ(accounts("changeUserPassword", key() + arg("passwordHash", "string", md5_hex("second")))
                .value(),
            "true");
  EXPECT_EQ(sign_in_as("ada@example.com", "first").status, 500);
  ASSERT_EQ(sign_in_as("ada@example.com", "second").status, 200);
  EXPECT_EQ(valid("second"), "true");

  // A user added by key joins that account.
  EXPECT_EQ(accounts("createUserInAccount",
                     arg("accountKey", "string", account_key) + arg("firstName", "string", "B") +
                         arg("lastName", "string", "B") + arg("email", "string", "bo@example.com") +
                         arg("password", "string", "pw") + arg("accountType", "string", "editor"))
                .value(),
            "true");
  ASSERT_EQ(sign_in_as("bo@example.com", "pw").status, 200);
  const Answer listed = call("Login", kLoginNs, "getUserAccounts", key());
  EXPECT_EQ(column(listed, "accountID"), std::vector<std::string>{account});
}

TEST_F(AccountsTest, RegistrantsAreKeptPerProjectSortedAndFoundByGuidOrEmail) {
  sign_in();
  const std::string project = create_project("Event");
  const std::string carol = add_registrant(project, "carol@example.com", "Adams").value();
  add_registrant(project, "alice@example.com", "Zeta");
  add_registrant(project, "bob@example.com", "Moss");
  EXPECT_EQ(detail_id(add_registrant(project, "BOB@example.com", "Again")), "1");

  const Answer by_email = registrants(project, 0, "email");
  EXPECT_EQ(
      column(by_email, "email"),
      (std::vector<std::string>{"alice@example.com", "bob@example.com", "carol@example.com"}));
  EXPECT_EQ(column(by_email, "password"), (std::vector<std::string>{"", "", ""}));
  EXPECT_STREQ(first_record(by_email).child("details").attribute("xsi:nil").value(), "true");
  EXPECT_STREQ(first_record(by_email).child("customXML").text().get(), "<x/>");
  EXPECT_EQ(column(registrants(project, 2, "lastName"), "lastName"),
            (std::vector<std::string>{"Adams", "Moss"}));
  EXPECT_EQ(column(registrants(project, 0, ""), "guid").front(), carol);

  const std::string by_guid = key() + arg("projectGuid", "string", project) +
                              arg("userGuid", "string", carol) + arg("email", "string", "");
  EXPECT_EQ(main("updateRegisteredUserName",
                 by_guid + arg("firstName", "string", "C") + arg("lastName", "string", "Zz"))
                .value(),
            "true");
  const std::string by_email_only = key() + arg("projectGuid", "string", project) +
                                    arg("userGuid", "string", "") +
                                    arg("email", "string", "ALICE@example.com");
  EXPECT_EQ(main("updateRegisteredUserCustomXML", by_email_only + arg("customXML", "string", "y"))
                .value(),
            "true");
  EXPECT_EQ(column(registrants(project, 0, "lastName"), "lastName"),
            (std::vector<std::string>{"Moss", "Zeta", "Zz"}));
  EXPECT_EQ(main("deleteRegisteredUser", key() + arg("projectGuid", "string", project) +
                                             arg("userGuid", "string", carol) +
                                             arg("email", "string", ""))
                .value(),
            "true");
  EXPECT_EQ(detail_id(main("updateRegisteredUserPassword",
                           key() + arg("projectGuid", "string", project) +
                               arg("userGuid", "string", carol) + arg("email", "string", "") +
                               arg("password", "string", "x"))),
            "2");
  EXPECT_EQ(fault_code(registrants("no-such-project", 0, "")), "tv:NoSuchProject");

  // Details, once a viewer's browser has told them, come as a nested record.
  {
    Database db(data_dir_ / "sandbox.sqlite3");
    db.execute(
        "INSERT INTO registrant_details (registrant_id, guid, browser_type, screen_width) "
        "SELECT id, 'd1', 'Firefox', 1280 FROM registrants WHERE email = 'bob@example.com'");
  }
  const Answer detailed = registrants(project, 1, "lastName");
  const pugi::xml_node bob_details = detailed.referenced(first_record(detailed).child("details"));
  EXPECT_STREQ(bob_details.child("browserType").text().get(), "Firefox");
  EXPECT_STREQ(bob_details.child("screenWidth").text().get(), "1280");
}

TEST_F(AccountsTest, QuotasBlockOrWarnAndDeploymentsCanBeSwitchedOff) {
  stop_server();
  ASSERT_EQ(apply_quota_option(options_.quotas, "projects=2:block"), "");
  options_.deployments_disabled = {1002};
  start_server();
  sign_in();
  const std::string first = create_project("One");
  create_project("Two");
  const Answer refused = main(
      "createProject", key() + arg("name", "string", "Three") + arg("description", "string", ""));
  EXPECT_EQ(fault_code(refused), "tv:QuotaExceeded");
  EXPECT_NE(refused.body.find("Quota 'projects' reached: 2 of 2"), std::string::npos);

  const Answer quotas =
      accounts("getQuotaList_Array", key() + arg("excludeProjectGuid", "string", first));
  const pugi::xml_node projects = first_record(quotas);
  EXPECT_STREQ(projects.child("type").text().get(), "projects");
  EXPECT_STREQ(projects.child("used").text().get(), "1");
  EXPECT_STREQ(projects.child("limit").text().get(), "2");
  EXPECT_STREQ(projects.child("failAction").text().get(), "block");
  EXPECT_STREQ(projects.child("defaultLimit").text().get(), "false");
  EXPECT_EQ(column(quotas, "type"),
            (std::vector<std::string>{"projects", "storage", "deployments"}));

  EXPECT_EQ(accounts("areDeploymentsDisabled", key()).value(), "false");
  EXPECT_EQ(accounts("getServiceOrderPeriod", key() + arg("quotaType", "string", ""))
                .return_element()
                .first_child(),
            pugi::xml_node());
  accounts("initiateServiceOrder", key());
  const Answer period =
      accounts("getServiceOrderPeriod", key() + arg("quotaType", "string", "projects"));
  EXPECT_EQ(std::string(period.return_element().attribute("soapenc:arrayType").value()),
            "xsd:dateTime[2]");

  sign_in(1002);
  EXPECT_EQ(accounts("areDeploymentsDisabled", key()).value(), "true");
  EXPECT_EQ(fault_code(main("deploy", key() + "<datarecordGuidList/><templateGuidList/>")),
            "tv:DeploymentsDisabled");

  stop_server();
  ASSERT_EQ(apply_quota_option(options_.quotas, "projects=0:warn"), "");
  start_server();
  sign_in();
  EXPECT_EQ(main("createProject",
                 key() + arg("name", "string", "Three") + arg("description", "string", ""))
                .status,
            200);
  EXPECT_EQ(main("projectExists", key() + arg("projectGuid", "string", first)).value(), "true");
}

TEST_F(AccountsTest, SendEmailWritesAMessageFileAndRefusesHeaderInjection) {
  login();
  const auto send = [&](std::string_view to, std::string_view subject) {
    return main("sendEmail", key() + arg("to", "string", to) + arg("subject", "string", subject) +
                                 arg("msg", "string", "Hello\nthere"));
  };
  EXPECT_EQ(fault_code(send("x@example.com&#13;&#10;Bcc: evil@example.com", "Hi")),
            "tv:InvalidArgument");
  EXPECT_EQ(fault_code(send("x@example.com", "Hi&#10;Bcc: evil@example.com")),
            "tv:InvalidArgument");
  EXPECT_FALSE(std::filesystem::exists(data_dir_ / "outbox"));

  EXPECT_EQ(send("viewer@example.com", "Welcome").value(), "true");
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(data_dir_ / "outbox")) {
    files.push_back(entry.path());
  }
  ASSERT_EQ(files.size(), 1u);
  EXPECT_EQ(files[0].extension(), ".eml");
  std::ifstream in(files[0], std::ios::binary);
  const std::string message((std::istreambuf_iterator<char>(in)), {});
  for (const char* header : {"From: demo@example.com\r\n", "To: viewer@example.com\r\n",
                             "Subject: Welcome\r\n", "Date: ", "Message-ID: <"}) {
    EXPECT_NE(message.find(header), std::string::npos) << header;
  }
  EXPECT_TRUE(message.ends_with("\r\n\r\nHello\r\nthere")) << message;
}

TEST_F(AccountsTest, TerminationRunsInTheBackgroundThenSignInIsRefused) {
  stop_server();
  options_.process_step = std::chrono::milliseconds(5);
  start_server();
  create_user("ada@example.com", "pw");
  ASSERT_EQ(sign_in_as("ada@example.com", "pw").status, 200);
  const std::string account = account_of("ada@example.com").first;
  ASSERT_EQ(
      call("Login", kLoginNs, "selectAccount", key() + arg("account_id", "int", account)).value(),
      "true");
  const std::string project = create_project("Mine");

  const std::string proc_guid = accounts("terminateUserAccount_Async", key()).value();
  ASSERT_TRUE(proc_guid.ends_with(";C")) << proc_guid;
  const std::string id = proc_guid.substr(0, proc_guid.find(';'));
  bool complete = false;
  for (int poll = 0; poll < 2000 && !complete; ++poll) {
    complete = main("isProcessComplete", arg("procGuid", "string", id)).value() == "true";
    if (!complete) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  ASSERT_TRUE(complete);
  EXPECT_EQ(accounts("terminateUserAccount_Result", key() + arg("procGuid", "string", id)).value(),
            "true");

  EXPECT_EQ(sign_in_as("ada@example.com", "pw").status, 500);
  Database db(data_dir_ / "sandbox.sqlite3");
  EXPECT_FALSE(db.prepare("SELECT 1 FROM projects WHERE guid = ?").bind(project).step());
}

}  // namespace
}  // namespace sandbox::testing
