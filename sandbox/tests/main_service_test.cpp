#include "sandbox_fixture.h"
#include "store/database.h"

namespace sandbox::testing {
namespace {

using MainServiceTest = SandboxTest;

TEST_F(MainServiceTest, StoresDebugInfoOnlyWithAValidKey) {
  const Answer refused =
      call("Telvane", kMainNs, "sendClientDebugInfo", arg("debugInfo", "string", "x"));
  EXPECT_EQ(refused.status, 500);

  login();
  const Answer sent = call("Telvane", kMainNs, "sendClientDebugInfo",
                           key() + arg("debugInfo", "string", "trace &amp; more"));
  EXPECT_EQ(sent.status, 200) << sent.body;

  Database db(data_dir_ / "sandbox.sqlite3");
  auto stored = db.prepare("SELECT text FROM client_debug_reports");
  ASSERT_TRUE(stored.step());
  EXPECT_EQ(stored.text(0), "trace & more");
}

TEST_F(MainServiceTest, DescribesDeploymentsOfTemplates) {
  login();
  const Answer never =
      call("Telvane", kMainNs, "getDeploymentInfo", key() + arg("templateGuid", "string", "T9"));
  ASSERT_EQ(never.status, 200) << never.body;
  const pugi::xml_node empty = never.referenced(never.return_element());
  EXPECT_STREQ(empty.child("deployed").text().get(), "false");
  EXPECT_STREQ(empty.child("deploymentDate").attribute("xsi:nil").value(), "true");

  {
    Database db(data_dir_ / "sandbox.sqlite3");
    db.execute(
        "INSERT INTO deployments (template_guid, deployed_at, height, width, live_enabled, name, "
        "link, duration, size) VALUES ('T1', 1700000000123, 480, 640, 1, 'Launch <1>', "
        "'http://127.0.0.1/x?a=1&b=2', 90, 1234)");
  }
  const Answer deployed =
      call("Telvane", kMainNs, "getDeploymentInfo", key() + arg("templateGuid", "string", "T1"));
  const pugi::xml_node info = deployed.referenced(deployed.return_element());
  // Every child the client reads is there; dates are milliseconds in UTC, texts escaped.
  EXPECT_EQ(std::distance(info.children().begin(), info.children().end()), 13);
  EXPECT_STREQ(info.child("deploymentDate").text().get(), "2023-11-14T22:13:20.123Z");
  EXPECT_STREQ(info.child("name").text().get(), "Launch <1>");
  EXPECT_STREQ(info.child("link").text().get(), "http://127.0.0.1/x?a=1&b=2");
}

}  // namespace
}  // namespace sandbox::testing
