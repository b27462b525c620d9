#pragma once
// ZylService: one connection to the Telvane services.
//
// Remote operations never throw. Each returns its failure value (false, 0, an empty string or
// a null pointer) when it fails, and leaves the cause in lastErrID() and lastErrMsg():
//   1 the connection timed out
//   2 the server address cannot be used
//   3 the server refused or dropped the connection, or is in maintenance
//   4 the server rejected the user name or password
//   5 the server does not accept this library's version
//  -1 anything else (lastErrMsg() says what)
// No success clears them. While alerts are on (the default) each such failure is also shown
// through the Host's message box with the title "Telvane". A fault answered by the service is
// shown at once in a message box, whatever the alert switch says, and leaves both untouched.
//
// One object serves one caller at a time; calls block until the answer is in or the time-out
// passes. Connections to the server are kept open and reused between calls.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "brenmoor/asset.h"
#include "brenmoor/client.h"
#include "brenmoor/collection.h"
#include "brenmoor/data_record.h"
#include "brenmoor/deployment.h"
#include "brenmoor/host.h"
#include "brenmoor/project.h"
#include "brenmoor/quota.h"
#include "brenmoor/report.h"
#include "brenmoor/template.h"
#include "brenmoor/trace.h"
#include "brenmoor/user_account_info.h"

namespace brenmoor {

namespace service {
struct State;
}

class ZylService {
 public:
  ZylService();
  ~ZylService();
  ZylService(const ZylService&) = delete;
  ZylService& operator=(const ZylService&) = delete;

  // --- Host -------------------------------------------------------------------------------
  // Replaces the host that shows message boxes; null restores the default StderrHost.
  void setHost(std::shared_ptr<Host> host);
  Host& host() const;

  // --- Properties -------------------------------------------------------------------------
  const std::string& baseUrl() const;
  const std::string& lastErrMsg() const;
  void setLastErrMsg(std::string message);
  int16_t lastErrID() const;
  void setLastErrID(int16_t id);

  // The endpoints derived from the base URL, the version learnt by Ping(), and the switches.
  const std::string& loginUrl() const;
  const std::string& telvaneUrl() const;
  const std::string& assetsUrl() const;
  const std::string& accountsUrl() const;
  const std::string& reportsUrl() const;
  const std::string& serverVersion() const;
  bool useProxy() const;
  bool showAlerts() const;
  // The source system given to Connect(), sent by the operations that name their source.
  const std::string& sourceSystem() const;

  // The largest answer body taken on, in bytes (1 GiB unless changed); the number of elements
  // an answer may hold grows with it. A larger answer fails with lastErrID() -1 and a text that
  // names the limit and the size reached. Records made from an answer are bounded in proportion
  // to its size, which only an answer that refers to the same values over and over reaches.
  uint64_t maxAnswerBytes() const;
  void setMaxAnswerBytes(uint64_t bytes);

  // The longest one call may take in milliseconds, however steadily the answer trickles in
  // (each call also ends after its time-out of silence: 4 s for Ping, 32 s for the long
  // operations, 15 s for the others). 0, the default, allows 8 times the call's time-out. A
  // call past it fails with lastErrID() 1 and a text that says the whole answer took too long.
  int64_t callDeadline() const;
  void setCallDeadline(int64_t milliseconds);

  // The certificate authorities an https server's certificate must chain to, as a PEM file of
  // one or more certificates; empty (the default): the system's authorities. Once set, the
  // authorities in the file are the only ones trusted, for SOAP calls and file uploads alike,
  // from the next request on. The certificate and its host name are always verified: a server
  // whose certificate cannot be verified (unknown authority, expired, issued for another name,
  // or a file that cannot be read) is sent nothing, and the call fails with lastErrID() -1 and
  // "The certificate of URL could not be verified, so nothing was sent: REASON"; an upload
  // ends with lastUploadErrorCode() 1 and the same text.
  const std::string& caFile() const;
  void setCaFile(const std::string& path);

  // --- Set-up -----------------------------------------------------------------------------
  // Stores the base URL and appends each service's path to it exactly as given: nothing is
  // checked or normalised, so "http://h/" gives "http://h//services/Login".
  void SetServiceBaseUrl(const std::string& baseUrl);
  // Turns the failure message boxes on or off.
  void ShowAlerts(bool val);
  // Hands every HTTP exchange of this object to `handler` (see trace.h); an empty handler
  // stops it. While a handler is set, each answer is also kept whole until it is handed over.
  void setTraceHandler(TraceHandler handler);

  // --- Server version and simple values ---------------------------------------------------
  // Sets the base URL and the proxy switch (true: through the proxy at localhost:8080), asks
  // the server for its version with a 4 second time-out and keeps it in serverVersion().
  // Reports a failure silently and then turns alerts on, whatever they were before.
  bool Ping(const std::string& baseUrl, bool m_useProxy = false);
  // A new guid made by the server.
  std::string getGuid();
  // The server's fixed URL.
  std::string getFixedUrl();

  // --- Connecting in one call -------------------------------------------------------------
  // Sets the server and the source system, checks compatibility, signs in and selects an
  // account (the one with `accountGuid`, or else the first of the user's accounts), showing
  // the host's contacting form (Host::showContactForm) throughout. Alerts are off while it
  // works and then back as they were; failures show in the form instead, whose OK button waits
  // for the user when alerts were on. An empty `sourceSystem` gives a message box (whatever
  // the alert switch says) and false, and changes nothing. An empty account list ends with
  // false and "Could not log in to the selected account".
  bool Connect(const std::string& baseUrl, const std::string& UserName, const std::string& Password,
               const std::string& sourceSystem, const std::string& accountGuid = "",
               bool m_useProxy = false, bool unencryptedPassword = false);

  // --- Signing in and accounts -----------------------------------------------------------
  // A new request key, "token:n:digest"; each read spends one value n of the key counter.
  // Throws Error::Overflow once the counter has reached 32767 (sign in again to reset it).
  std::string key();
  // The number of keys handed out in this session; signing in sets it to 1.
  int16_t keyCounter() const;
  // The session token of the last sign-in, empty before one.
  const std::string& sessionToken() const;

  // Signs in by challenge and response; `Password` is the MD5 digest of the password, never
  // the password. Returns the session token (empty after a failure; after a fault answered by
  // the service, the previous token). Then learns the server's version.
  std::string login(const std::string& UserName, const std::string& Password);
  // The same with the clear password, which is digested here and never sent.
  std::string loginUnencryptedPassword(const std::string& UserName, const std::string& Password);
  // Ends the session on the server; the local session values stay until the next sign-in.
  bool logout();

  // The accounts of the signed-in user; null after a failure, empty when there are none.
  std::shared_ptr<Collection<UserAccountInfo>> getAccounts();
  // Binds the session to an account. `accountID` must be a whole number: other text is
  // reported as a failure and nothing is sent.
  bool selectAccount(const std::string& accountID);
  bool selectAccountByGuid(const std::string& accountGuid);

  // --- Version checks ---------------------------------------------------------------------
  // Whether version `v` ("a.b.c.d") is not newer than serverVersion(). Always true against a
  // 3.2.1.0 server; false when either version is not four whole numbers.
  bool validVersion(const std::string& v) const;
  // Asks the server whether it accepts this library's version. A refusal (or a fault) leaves
  // lastErrID() 5; a failure to ask leaves the reporter's number.
  bool isCompatible();
  // Sends diagnostics text to servers from 3.2.4.59 on; does nothing with older ones.
  void sendDebugInfo(const std::string& debugInfo);

  // --- Projects ---------------------------------------------------------------------------
  // The new project's guid; empty when the name is taken (a message box says so) or on failure.
  std::string createProject(const std::string& projectName, const std::string& projectDesc);
  // Deletes the project, undeploying it too. True unless the service faults or the call fails.
  bool deleteProject(const std::string& projectGuid);
  bool projectExists(const std::string& projectGuid);
  // Whether a template of the project (of that type, when one is given) is deployed.
  bool hasDeployedTemplate(const std::string& projectGuid, const std::string& templateType = "");
  // The account's projects, or those of one type when `typeID` is not empty.
  std::shared_ptr<Collection<ProjectInfo>> getProjectList(const std::string& typeID = "");
  std::shared_ptr<ProjectInfo> getProjectInfo(const std::string& projectGuid);
  // True unless the service faults or the call fails.
  bool setProjectType(const std::string& projectGuid, const std::string& typeID);

  // --- Long-running work ------------------------------------------------------------------
  // The blocking form waits up to 32 s of silence. True unless the service faults.
  bool clearProject(const std::string& projectGuid, bool undeploy = false);
  // The asynchronous forms return a procGuid ("id;code") to poll with the calls below.
  std::string clearProject_Async(const std::string& projectGuid, bool undeploy = false);
  std::string undeployProject_Async(const std::string& projectGuid);
  // A procGuid without ";" is refused without a request, an alert or an error.
  bool isProcessComplete(const std::string& procGuid);
  int16_t getProcessPercentComplete(const std::string& procGuid);
  std::string getProcessMessage(const std::string& procGuid);
  bool clearProject_Result(const std::string& procGuid);
  bool undeployProject_Result(const std::string& procGuid);

  // --- Templates, themes and components ---------------------------------------------------
  bool hasTemplateAccess(const std::string& templateGuid, const std::string& rights = "");
  // The templates that the service's list operation `methodStr` gives for type `tType`.
  std::shared_ptr<Collection<TemplateInfo>> getTemplateList(const std::string& tType,
                                                            const std::string& methodStr);
  std::shared_ptr<Collection<TemplateInfo>> getProjectTemplateList(
      const std::string& projectGuid, bool includeDeploymentInfo = false);
  // True unless the service faults or the call fails.
  bool setTemplateMetadata(const std::string& templateGuid, const std::string& metadataXML);
  bool templateExists(const std::string& templateGuid);
  // Null after a fault, without a message box.
  std::shared_ptr<TemplateInfo> getTemplateInfo(const std::string& templateGuid);
  std::shared_ptr<TemplateInfo> getThemeTemplateInfo(const std::string& themeGuid,
                                                     const std::string& templateGuid);
  // Copies a template into a project (waiting up to 32 s of silence); the copy's guid.
  std::string copyTemplate(const std::string& templateGuid, const std::string& projectGuid,
                           const std::string& templateName, bool overwriteExisting);
  // The service's answer as text.
  std::string deleteTemplate(const std::string& templateGuid, bool undeploy = false);
  // The components of a template matching every filter that is not empty.
  std::shared_ptr<Collection<Component>> getComponents(const std::string& templateGuid,
                                                       const std::string& componentGuid,
                                                       const std::string& componentLabel,
                                                       const std::string& componentClass);
  std::shared_ptr<Collection<ThemeInfo>> getThemeList(const std::string& typeStr,
                                                      const std::string& methodStr);
  std::shared_ptr<ThemeInfo> getThemeInfo(const std::string& guid);
  // Copies the theme's templates into the project (waiting up to 32 s of silence).
  bool applyTheme(const std::string& themeGuid, const std::string& projectGuid);

  // --- Deployments ------------------------------------------------------------------------
  // The deployment of a template. After a fault, an empty record; after a failure, null.
  std::shared_ptr<DeploymentInfo> getDeploymentInfo(const std::string& templateGuid);
  bool setDeploymentVersionDuration(const std::string& versionGuid, int16_t duration);
  std::shared_ptr<Collection<DeploymentEnvironmentInfo>> getDeploymentEnvironmentList();
  // True unless the service faults or the call fails.
  bool setProjectDeploymentDefinition(const std::string& projectGuid, int16_t deploymentDefID,
                                      const std::string& deploymentPath = "");
  std::shared_ptr<Collection<DeploymentStatusInfo>> getDeploymentStatusList(
      const std::vector<std::string>& deploymentGuidList);

  // --- Data records -----------------------------------------------------------------------
  // The record the service keeps for these templates. After a fault (no message box) a new
  // record without entries; after a failure, null.
  std::shared_ptr<DataRecord> getDataRecord(const std::vector<std::string>& templateGuid);
  // A record built from a theme's templates, with sources, button texts and (from services
  // 3.2.4.59 on) sizes. Fault and failure as getDataRecord().
  std::shared_ptr<DataRecord> getThemeDataRecord(const std::string& themeGuid);
  // One entry of a template's record, by guid or by label. After a fault a new, empty entry.
  std::shared_ptr<DataRecordEntry> getDataRecordEntry(const std::string& templateGuid,
                                                      const std::string& dreGuid,
                                                      const std::string& dreLabel);
  // Stores a record in a project and returns the service's answer (the record's guid). Each
  // entry needs a guid: only the first one of each entry is sent.
  std::string createDataRecord(const DataRecord& dr, const std::string& projectGuid,
                               bool overwriteExisting);
  std::string setDataRecordSyncData(const std::string& drGuid, const std::string& templateGuid,
                                    const std::string& syncXML);
  // Deploys the templates with the records; one deployment guid per template, empty after a
  // fault or failure.
  std::vector<std::string> Deploy(const std::vector<std::string>& datarecordGuid,
                                  const std::vector<std::string>& templateGuid);

  // --- Creating assets -------------------------------------------------------------------
  // Uploads each representation's file to the upload page under getFixedUrl(), then registers
  // the asset there. Writes each representation's guid (the upload's key) and filename (its
  // name, blanks made "_"); a failed upload marks it invalid, shows a message box whatever the
  // alert switch says, and the asset is registered without it. Progress reaches the host
  // (Host::CreateAssetProgress, Host::CreateAssetFileProgress). The new asset's guid.
  std::string CreateAsset(const std::string& assetName, const std::string& assetDesc,
                          const std::string& assetType, const Collection<Representation>& repList,
                          int16_t folderID, bool PreventDMP = false,
                          const Collection<Metadata>& metadataList = {},
                          const std::string& parentGuid = "");
  // Uploads each file into a project, where the service keeps it at a URL, and registers the
  // asset by those URLs; writes each representation's filename (the URL) and size. Nothing
  // is registered for an empty list. The new asset's guid.
  std::string CreateAsset_Unmanaged(const std::string& assetName, const std::string& assetDesc,
                                    const std::string& assetType,
                                    const Collection<Representation>& repList, int16_t folderID,
                                    const std::string& projectGuid,
                                    const Collection<Metadata>& metadataList = {},
                                    const std::string& parentGuid = "");
  // Stops the creation in progress before its next 4096-byte chunk. Call it from a host event
  // or from Host::yield(). An unmanaged creation also stops after the current file.
  void Cancel();
  // How the last file upload ended: 0 sent, 1 the send failed (or the file could not be read,
  // or the server stopped reading), 2 cancelled, 3 the page answered an error; with its text.
  int32_t lastUploadErrorCode() const;
  const std::string& lastUploadErrorMessage() const;

  // Registers an asset by its descriptor; `serviceUrl`, when given, is the base URL whose
  // Assets service takes it. The service's answer.
  std::string addAsset(const std::string& xml, const std::string& serviceUrl = "");
  std::string makeUnmanagedAssetRemoveable(const std::string& assetGuid,
                                           const std::vector<std::string>& timedDataList);

  // --- Asset folders and queries ----------------------------------------------------------
  // The list operations return an empty collection, never null, when the call fails.
  std::string getAssetFolderXML(int16_t folderID);
  // The new folder's id.
  int16_t createAssetFolder(const std::string& folderpath);
  std::string getAssetFolderRights(int16_t folderID);
  int16_t createChildAssetFolder(int16_t parentID, const std::string& folderpath);
  bool deleteAssetFolder(int16_t folderID);
  // A procGuid to follow with isProcessComplete() and the calls beside it.
  std::string clearAssetFolder_Async(int16_t folderID);
  // Waits up to 32 s of silence.
  bool clearAssetFolder(int16_t folderID);
  bool setAssetFolderMetadata(int16_t folderID, const std::string& metadataXML);
  std::shared_ptr<Collection<ZylFolderNode>> getAssetFolderTree(int16_t folderID);
  std::shared_ptr<Collection<ZylAsset>> getFolderAssets(int16_t folderID);
  // Folder 0: every folder.
  std::shared_ptr<Collection<ZylAsset>> getAssetsByName(const std::string& name,
                                                        int16_t folderID = 0);
  std::shared_ptr<Collection<ZylAsset>> getAssets(
      int16_t folderID, int16_t assetTypeID = 0, int16_t fileTypeID = 0, int16_t assetWidth = 0,
      int16_t assetHeight = 0, const std::string& sExtension = "",
      const std::string& searchFor = "", const std::string& searchBy = "", bool searchExact = false,
      const std::string& sortBy = "");
  bool deleteAsset(const std::string& assetGuid);
  // `repID` is accepted and not sent: the service previews the first representation.
  std::string getAssetPreviewUrl(const std::string& assetGuid, int16_t repID = 0);

  // --- Users and e-mail -------------------------------------------------------------------
  // A new user with an account of their own, or a new user in the account with `accountKey`.
  // Neither needs a session; the password travels as given, on these two calls only.
  bool createUserAccount(const std::string& firstName, const std::string& lastName,
                         const std::string& email, const std::string& Password);
  bool createUserInAccount(const std::string& accountKey, const std::string& firstName,
                           const std::string& lastName, const std::string& email,
                           const std::string& Password, const std::string& accountType);
  // Sends an e-mail through the service (waiting up to 32 s of silence).
  bool sendEmail(const std::string& emailTo, const std::string& subject, const std::string& msg);
  // Ends the signed-in user's account in the background: a procGuid to follow with
  // isProcessComplete() and the calls beside it, then to end with terminateUserAccount_Result().
  std::string terminateUserAccount_Async();
  bool terminateUserAccount_Result(const std::string& procGuid);

  // --- Registrants ------------------------------------------------------------------------
  // The registrants of a project; `maxRecords` 0 and an empty `sortBy` leave both to the
  // service.
  std::shared_ptr<Collection<Client>> getRegistrationList(const std::string& projectGuid,
                                                          int16_t maxRecords = 0,
                                                          const std::string& sortBy = "");
  // The new registrant's guid.
  std::string addRegisteredUser(const std::string& projectGuid, const std::string& userGuid,
                                const std::string& email, const std::string& firstName,
                                const std::string& lastName, const std::string& Password,
                                const std::string& customXML = "", const std::string& userIP = "",
                                const std::string& userHostName = "");
  // These name the registrant by `userGuid` or `email`; with neither they show a message box
  // (whatever the alert switch says), send nothing and return false.
  bool deleteRegisteredUser(const std::string& projectGuid, const std::string& userGuid = "",
                            const std::string& email = "");
  bool updateRegisteredUserPassword(const std::string& projectGuid, const std::string& userGuid,
                                    const std::string& email, const std::string& Password);
  bool updateRegisteredUserName(const std::string& projectGuid, const std::string& userGuid,
                                const std::string& email, const std::string& firstName,
                                const std::string& lastName);
  bool updateRegisteredUserCustomXML(const std::string& projectGuid, const std::string& userGuid,
                                     const std::string& email, const std::string& customXML);

  // --- Quotas, service orders and account checks ------------------------------------------
  std::string initiateServiceOrder();
  // The name of the account with this key; needs no session.
  std::string getAccountName(const std::string& accountKey);
  // Whether the user may use the account; needs no session. Only a digest of the password,
  // mixed with the e-mail address and the account key, is sent.
  bool isUserAccountValid(const std::string& accountKey, const std::string& email,
                          const std::string& Password);
  // Sends only the new password's digest.
  bool changeUserPassword(const std::string& Password);
  bool areDeploymentsDisabled();
  std::shared_ptr<Collection<Quota>> getQuotaList(const std::string& excludeProjectGuid = "");
  std::shared_ptr<Collection<Date>> getServiceOrderPeriod(const std::string& quotatype = "");

  // --- Reports ----------------------------------------------------------------------------
  // A report's range runs from `startDate` (the zero date, 30 December 1899, when not given)
  // to `endDate` (now when not given); both are local times, sent as UTC. Reports need the
  // session of a sign-in with an account selected, and send no key.

  // Any report that takes a page and a range, by the name of its operation.
  double getReport(const std::string& reportName, const std::string& pageGuid,
                   const std::optional<Date>& startDate = {},
                   const std::optional<Date>& endDate = {});
  int16_t getTotalPageHits(const std::string& pageGuid, const std::optional<Date>& startDate = {},
                           const std::optional<Date>& endDate = {});
  int16_t getTotalPageViewTime(const std::string& pageGuid,
                               const std::optional<Date>& startDate = {},
                               const std::optional<Date>& endDate = {});
  double getLimitedPageViewTime(const std::string& pageGuid,
                                const std::optional<Date>& startDate = {},
                                const std::optional<Date>& endDate = {},
                                bool useDurationOnly = false);
  double getLimitedUserViewerTime(const std::string& projectType, const std::string& templateType,
                                  const std::optional<Date>& startDate = {},
                                  const std::optional<Date>& endDate = {});
  int32_t getUserStorageUsed(const std::string& projectType, const std::string& templateType);
  int16_t getTotalParticipants(const std::string& pageGuid,
                               const std::optional<Date>& startDate = {},
                               const std::optional<Date>& endDate = {});
  int16_t getTotalNonparticipants(const std::string& pageGuid,
                                  const std::optional<Date>& startDate = {},
                                  const std::optional<Date>& endDate = {});
  int16_t getTotalParticipantRegistrants(const std::string& pageGuid,
                                         const std::optional<Date>& startDate = {},
                                         const std::optional<Date>& endDate = {});
  int16_t getTotalRegistrants(const std::string& pageGuid);
  // Hits by distinct viewers, optionally only those whose `filter` property compares by
  // `filterOperator` with `filterValue`.
  int16_t getUniquePageHits(const std::string& pageGuid, const std::optional<Date>& startDate = {},
                            const std::optional<Date>& endDate = {}, const std::string& filter = "",
                            const std::string& filterOperator = "",
                            const std::string& filterValue = "");
  std::shared_ptr<Collection<PageHitInfo>> getPageHitList(const std::string& pageGuid,
                                                          const std::optional<Date>& startDate = {},
                                                          const std::optional<Date>& endDate = {});
  std::shared_ptr<Collection<PageViewerInfo>> getParticipantList(
      const std::string& pageGuid, const std::optional<Date>& startDate = {},
      const std::optional<Date>& endDate = {});
  std::shared_ptr<Collection<PageViewerInfo>> getRegistrantList(
      const std::string& pageGuid, const std::optional<Date>& startDate = {},
      const std::optional<Date>& endDate = {});

  // --- Polls, surveys and questions -------------------------------------------------------
  std::shared_ptr<Collection<PollQuestion>> getPollSummaryResults(const std::string& pageGuid);
  // Empty, and nothing sent, against servers older than 3.2.4.60 (or before Ping or sign-in
  // has learnt the version).
  std::vector<PollResponse> getPollResponses(const std::string& pageGuid);
  std::shared_ptr<Collection<Survey>> getSurveyList(const std::string& pageGuid);
  std::shared_ptr<Survey> getSurveySummary(const std::string& pageGuid,
                                           const std::string& surveyGuid);
  std::vector<SurveyResponse> getSurveyResponses(const std::string& pageGuid,
                                                 const std::string& surveyGuid);
  std::shared_ptr<Collection<QAItem>> getQAList(const std::string& pageGuid,
                                                const std::optional<Date>& startDate = {},
                                                const std::optional<Date>& endDate = {});
  // Both false, and nothing sent, against servers older than 3.2.4.60.
  bool updateQAItem(const std::string& itemGuid, const std::string& answer,
                    const std::string& question = "", const std::string& name = "",
                    const std::string& location = "");
  bool updateQAItemStatus(const std::string& itemGuid, const std::string& status);

 private:
  std::unique_ptr<service::State> state_;
};

}  // namespace brenmoor
