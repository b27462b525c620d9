#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "project_fixture.h"

namespace sandbox::testing {
namespace {

constexpr std::string_view kAssetsNs = "urn:telvane-assets";
constexpr std::string_view kManagedPage = "/AssetManager/am_Asset_BinaryUpload.jsp";
constexpr std::string_view kUnmanagedPage = "/AssetManager/am_Asset_Unmanaged_BinaryUpload.jsp";

// Every byte value, so that nothing on the way may treat the body as text.
std::string binary_bytes(std::size_t size) {
  std::string bytes(size, '\0');
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 7 % 256);
  return bytes;
}

// One representation block as the client writes it, managed (file) or unmanaged (URL).
std::string representation(std::string_view file_type, int width, std::string_view location) {
  return "\t<REPRESENTATION reptype=\"main\" filetype=\"" + std::string(file_type) +
         "\" language=\"ENGLISH\" bandwidth=\"0\" width=\"" + std::to_string(width) +
         "\" height=\"10\">\r\n\t\t<FILES>\r\n" + std::string(location) + "\t\t</FILES>\r\n" +
         "\t</REPRESENTATION>\r\n";
}
std::string file_location(std::string_view key, std::string_view rename) {
  return "\t\t\t<LOCATION type=\"file\">\r\n\t\t\t\t<SERVER></SERVER>\r\n\t\t\t\t<PATH>\r\n"
         "\t\t\t\t\t<DIRECTORY><![CDATA[]]></DIRECTORY>\r\n\t\t\t\t\t<FILE>\r\n"
         "\t\t\t\t\t\t<NAME rename=\"" +
         std::string(rename) + "\">" + std::string(key) +
         "</NAME>\r\n\t\t\t\t\t</FILE>\r\n\t\t\t\t</PATH>\r\n\t\t\t</LOCATION>\r\n";
}
std::string url_location(std::string_view url) {
  return "\t\t\t<LOCATION type=\"unmanaged\">\r\n\t\t\t\t<URL>" + std::string(url) +
         "</URL>\r\n\t\t\t</LOCATION>\r\n";
}
std::string descriptor(std::string_view type, int folder, std::string_view name,
                       std::string_view description, std::string_view representations) {
  return "<ASSET type='" + std::string(type) + "' folder_id='" + std::to_string(folder) +
         "' nodmp='true'><STATUS>ACTIVE</STATUS><ACTIVEDATE>1/2/2025 10:00:00 AM</ACTIVEDATE>"
         "<NAME>" +
         std::string(name) + "</NAME><DESCRIPTION>" + std::string(description) +
         "</DESCRIPTION><METADATA tag=\"k\"><![CDATA[v]]></METADATA>" +
         std::string(representations) + "</ASSET>";
}

// Signed in with an account selected; asset calls ride on the session cookie.
class AssetTest : public ProjectTest {
 protected:
  Answer assets(std::string_view operation, std::string_view arguments = "") {
    return call("Assets", kAssetsNs, operation, arguments);
  }
  // POSTs raw bytes without a content type, as the client does; answers the page's text.
  std::string upload(const std::string& path_and_query, const std::string& bytes) {
    const auto result = client_->Post(path_and_query, bytes, "");
    return result ? result->body : "no answer";
  }
  std::string get(const std::string& url) {
    const auto result = client_->Get(url.substr(server_->base_url().size()));
    return result && result->status == 200
               ? result->body
               : "status " + std::to_string(result ? result->status : 0);
  }
  Answer add_asset(const std::string& xml) {
    return assets("addAsset_XML",
                  arg("xmlData", "string", escaped(xml)) + arg("sourceSystem", "string", "tests"));
  }
  static std::string escaped(std::string_view text) {
    std::string out;
    for (char c : text) out += c == '<' ? "&lt;" : c == '&' ? "&amp;" : std::string(1, c);
    return out;
  }
  // The names of a getAssets or getAssetsByName answer, in order.
  static std::vector<std::string> names(const Answer& answer) {
    std::vector<std::string> found;
    for (pugi::xml_node item : answer.return_element().children()) {
      found.emplace_back(answer.referenced(item).child("name").text().get());
    }
    return found;
  }
  Answer get_assets(int folder, int type, std::string_view extension, std::string_view search,
                    std::string_view search_by, bool exact, std::string_view sort, int width = 0) {
    return assets("getAssets",
                  arg("folderID", "int", std::to_string(folder)) +
                      arg("assetTypeID", "int", std::to_string(type)) +
                      arg("fileTypeID", "int", "0") +
                      arg("assetWidth", "int", std::to_string(width)) +
                      arg("assetHeight", "int", "0") + arg("sExtension", "string", extension) +
                      arg("searchFor", "string", search) + arg("searchBy", "string", search_by) +
                      arg("searchExact", "boolean", exact ? "true" : "false") +
                      arg("sortBy", "string", sort));
  }
  Answer folder_call(std::string_view operation, int folder) {
    return assets(operation, arg("folderID", "int", std::to_string(folder)));
  }
};

TEST_F(AssetTest, UploadsRegisterQueryPreviewAndDeleteWithExactBytes) {
  sign_in();
  const std::string fixed_url = main("getFixedUrl").value();
  EXPECT_EQ(fixed_url, server_->base_url() + "/fixed");
  const std::string photo = binary_bytes(5000);
  const std::string key = upload(fixed_url.substr(server_->base_url().size()) +
                                     std::string(kManagedPage) + "?key=" + key_text(),
                                 photo);
  ASSERT_EQ(key.find("Error:"), std::string::npos) << key;
  const std::string notes_key = upload(std::string(kManagedPage) + "?key=" + key_text(), "pdf");

  const std::string folder =
      assets("createFolder", arg("folderPath", "string", "Shots/Day 1")).value();
  const Answer tree = folder_call("getFolderTree", 0);
  std::vector<std::string> depths;
  for (pugi::xml_node node : tree.return_element().children()) {
    const pugi::xml_node folder_node = tree.referenced(node);
    depths.push_back(std::string(folder_node.child("name").text().get()) + ":" +
                     folder_node.child("parentCount").text().get());
  }
  EXPECT_EQ(depths, (std::vector<std::string>{"Root:0", "Documents:1", "Images:1", "Shots:1",
                                              "Day 1:2", "Video:1"}));

  const int id = std::stoi(folder);
  const std::string sunset =
      add_asset(descriptor("Image", id, "Sunset &amp; Sea", "evening",
                           representation("jpg", 640, file_location(key, "photo.jpg"))))
          .value();
  add_asset(descriptor("4", id, "Notes", "sunset notes",
                       representation("pdf", 0, file_location(notes_key, "notes.PDF"))));

  EXPECT_EQ(names(get_assets(id, 1, "", "", "", false, "")),
            std::vector<std::string>{"Sunset & Sea"});
  EXPECT_EQ(names(get_assets(0, 0, ".pdf", "", "", false, "")), std::vector<std::string>{"Notes"});
  EXPECT_EQ(names(get_assets(id, 0, "", "", "", false, "", 640)),
            std::vector<std::string>{"Sunset & Sea"});
  EXPECT_EQ(names(get_assets(id, 0, "", "SUNSET", "", false, "name")),
            (std::vector<std::string>{"Notes", "Sunset & Sea"}));
  EXPECT_EQ(names(get_assets(id, 0, "", "sunset", "name", false, "created")),
            std::vector<std::string>{"Sunset & Sea"});
  EXPECT_TRUE(names(get_assets(id, 0, "", "sunset", "name", true, "")).empty());

  const Answer by_name = assets(
      "getAssetsByName", arg("name", "string", "sunset &amp; sea") + arg("folderID", "int", "0"));
  const pugi::xml_node item = by_name.referenced(by_name.return_element().first_child());
  EXPECT_STREQ(item.child("guid").text().get(), sunset.c_str());
  EXPECT_STREQ(item.child("typeText").text().get(), "Image");
  EXPECT_STREQ(item.child("created").attribute("xsi:type").value(), "xsd:dateTime");
  EXPECT_EQ(get(item.child("thumbnail").text().get()).substr(1, 3), "PNG");
  EXPECT_EQ(get(item.child("typeIcon").text().get()).substr(1, 3), "PNG");

  const std::string preview =
      assets("getAssetPreviewUrl", arg("assetGuid", "string", sunset)).value();
  EXPECT_EQ(get(preview), photo);

  // Unmanaged: stored with the project, served back, registered by its URL.
  const std::string project = create_project("Clips");
  const std::string clip = binary_bytes(4097);
  const std::string answer =
      upload(std::string(kUnmanagedPage) + "?pid=" + project + "&key=" + key_text() +
                 "&name=Sunset_Sea/clip,1.mp4&filetype=mp4",
             clip);
  const auto comma = answer.find(','), second = answer.find(',', comma + 1);
  ASSERT_NE(second, std::string::npos) << answer;
  const std::string url = answer.substr(0, comma);
  EXPECT_EQ(answer.substr(comma + 1, second - comma - 1), "4097");
  EXPECT_EQ(get(url), clip);
  const std::string movie =
      add_asset(descriptor("Video", id, "Clip", "", representation("mp4", 320, url_location(url))))
          .value();
  EXPECT_EQ(assets("makeUnmanagedAssetRemoveable",
                   arg("assetGuid", "string", movie) +
                       "<timedDataList XI:type=\"SOAP-ENC:Array\" "
                       "xmlns:SOAP-ENC=\"http://schemas.xmlsoap.org/soap/encoding/\" "
                       "SOAP-ENC:arrayType=\"XS:string[2]\">" +
                       arg("item", "string", answer.substr(second + 1)) +
                       arg("item", "string", "") + "</timedDataList>")
                .value(),
            "true");

  EXPECT_EQ(assets("deleteAsset", arg("assetGuid", "string", sunset)).value(), "true");
  EXPECT_FALSE(std::filesystem::exists(data_dir_ / "uploads" / key));
  EXPECT_EQ(get(preview), "status 404");
}

TEST_F(AssetTest, UploadPagesAnswerErrorsAndKeepNoPartialFile) {
  stop_server();
  options_.max_upload_bytes = 1000;
  start_server();
  sign_in();
  const std::string managed = std::string(kManagedPage) + "?key=";
  EXPECT_TRUE(upload(managed + token_ + ":99:0123", "x").starts_with("Error: Invalid session key"));
  const std::string used = key_text();
  EXPECT_EQ(upload(managed + used, "x").find("Error:"), std::string::npos);
  EXPECT_TRUE(upload(managed + used, "x").starts_with("Error: Stale or replayed"));
  EXPECT_TRUE(
      upload(std::string(kUnmanagedPage) + "?pid=nope&key=" + key_text() + "&name=a/b&filetype=x",
             "x")
          .starts_with("Error: No project"));
  EXPECT_TRUE(upload(managed + key_text(), std::string(1001, 'x'))
                  .starts_with("Error: the file is larger"));

  // HTTP/1.0 as the client sends it, the body cut short by a half-close. httplib writes no
  // answer to a peer that has closed its side; the close below comes once the page is done.
  const int socket_fd = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(std::stoi(server_->base_url().substr(17))));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  ASSERT_EQ(::connect(socket_fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  const std::string request =
      "POST " + managed + key_text() +
      " HTTP/1.0\r\nHost: 127.0.0.1\r\nContent-Length: 900\r\n\r\nonly this";
  ASSERT_EQ(::send(socket_fd, request.data(), request.size(), 0),
            static_cast<ssize_t>(request.size()));
  ::shutdown(socket_fd, SHUT_WR);
  const timeval patience{10, 0};
  ::setsockopt(socket_fd, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
  char reply[256];
  while (::recv(socket_fd, reply, sizeof reply, 0) > 0) {
  }
  ::close(socket_fd);
  std::size_t stored = 0;
  for (const auto& entry : std::filesystem::directory_iterator(data_dir_ / "uploads")) {
    EXPECT_FALSE(entry.path().string().ends_with(".part"));
    ++stored;
  }
  EXPECT_EQ(stored, 1u);  // the one accepted above
}

TEST_F(AssetTest, DescriptorsMustBeWellFormedAndNameThisAccountsUploads) {
  sign_in();
  const std::string key = upload(std::string(kManagedPage) + "?key=" + key_text(), "bytes");
  const auto refusal = [this](const std::string& xml) {
    return std::string(add_asset(xml).application_fault().child("faultstring").text().get());
  };
  EXPECT_NE(refusal("<ASSET type='1'").find("not well-formed"), std::string::npos);
  EXPECT_NE(refusal("<!DOCTYPE ASSET [<!ENTITY x \"y\">]><ASSET type='1' "
                    "folder_id='2'><NAME>&x;</NAME></ASSET>")
                .find("document type declaration"),
            std::string::npos);
  EXPECT_NE(refusal(descriptor("1", 2, "A", "",
                               representation("jpg", 1, file_location("not-an-upload", "a.jpg"))))
                .find("names no unused upload"),
            std::string::npos);
  sign_in(1002);
  EXPECT_NE(
      refusal(descriptor("1", 2, "A", "", representation("jpg", 1, file_location(key, "a.jpg"))))
          .find("names no unused upload"),
      std::string::npos);
}

TEST_F(AssetTest, FoldersRefuseDeletionUntilAnAsyncClearHasRun) {
  stop_server();
  options_.process_step = std::chrono::milliseconds(5);
  start_server();
  sign_in();
  const std::string parent = assets("createFolder", arg("folderPath", "string", "Event")).value();
  assets("createChildFolder", arg("parentID", "int", parent) + arg("folderPath", "string", "Raw"));
  const std::string key = upload(std::string(kManagedPage) + "?key=" + key_text(), "bytes");
  add_asset(descriptor("1", std::stoi(parent), "A", "",
                       representation("jpg", 1, file_location(key, "a.jpg"))));
  assets("setFolderMetadata", arg("folderID", "int", parent) +
                                  arg("metadataXML", "string", "&lt;m/&gt;") +
                                  arg("sourceSystem", "string", "tests"));
  EXPECT_NE(folder_call("getFolder_XML", std::stoi(parent)).value().find("assetCount=\"1\""),
            std::string::npos);
  EXPECT_EQ(folder_call("getFolderRights", std::stoi(parent)).value(), "RWD");

  const Answer refused = folder_call("deleteFolder", std::stoi(parent));
  EXPECT_STREQ(refused.application_fault().child("faultcode").text().get(), "tv:FolderNotEmpty");
  const std::string handle = folder_call("clearFolder_Async", std::stoi(parent)).value();
  ASSERT_TRUE(handle.ends_with(";A")) << handle;
  const std::string id = handle.substr(0, handle.find(';'));
  bool complete = false;
  for (int poll = 0; poll < 2000 && !complete; ++poll) {
    complete = main("isProcessComplete", arg("procGuid", "string", id)).value() == "true";
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  ASSERT_TRUE(complete);
  EXPECT_EQ(main("getProcessMessage", arg("procGuid", "string", id)).value(), "Complete");
  EXPECT_FALSE(std::filesystem::exists(data_dir_ / "uploads" / key));
  EXPECT_EQ(folder_call("deleteFolder", std::stoi(parent)).value(), "true");
}

TEST_F(AssetTest, OperationsNeedTheSessionCookieAndASelectedAccount) {
  EXPECT_NE(folder_call("getFolderTree", 0).fault_string().find("No session"), std::string::npos);
  login();
  EXPECT_EQ(folder_call("getFolderTree", 0).fault_string(),
            "java.lang.Exception: No account selected");
  cookie_ = "TelvaneSession=forged";
  EXPECT_NE(folder_call("getFolderTree", 0).fault_string().find("Unknown session cookie"),
            std::string::npos);
}

}  // namespace
}  // namespace sandbox::testing
