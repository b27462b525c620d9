#include "tls_server.h"

#include <httplib.h>
#include <openssl/ec.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <chrono>
#include <cstdio>
#include <stdexcept>

namespace brenmoor::testing {
namespace {

std::shared_ptr<EVP_PKEY> newKey() {
  return {EVP_EC_gen("P-256"), EVP_PKEY_free};
}

void addExtension(X509* cert, X509* issuer, int nid, const char* value) {
  X509V3_CTX context;
  X509V3_set_ctx_nodb(&context);
  X509V3_set_ctx(&context, issuer, cert, nullptr, nullptr, 0);
  X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, &context, nid, value);
  if (!extension) throw std::runtime_error(std::string("bad extension ") + value);
  X509_add_ext(cert, extension, -1);
  X509_EXTENSION_free(extension);
}

// A certificate for `name`, signed by `issuer` (itself when null).
Certificate make(const std::string& name, const Certificate* issuer, long fromDays, long toDays) {
  static long serial = 1;
  Certificate made{{X509_new(), X509_free}, newKey()};
  X509* cert = made.cert.get();
  X509_set_version(cert, 2);
  ASN1_INTEGER_set(X509_get_serialNumber(cert), serial++);
  X509_gmtime_adj(X509_getm_notBefore(cert), fromDays * 86400);
  X509_gmtime_adj(X509_getm_notAfter(cert), toDays * 86400);
  X509_set_pubkey(cert, made.key.get());
  X509_NAME* subject = X509_get_subject_name(cert);
  X509_NAME_add_entry_by_txt(subject, "CN", MBSTRING_ASC,
                             reinterpret_cast<const unsigned char*>(name.c_str()), -1, -1, 0);
  X509* signer = issuer ? issuer->cert.get() : cert;
  X509_set_issuer_name(cert, X509_get_subject_name(signer));
  return made;
}

void sign(const Certificate& made, const Certificate& by) {
  if (X509_sign(made.cert.get(), by.key.get(), EVP_sha256()) == 0) {
    throw std::runtime_error("cannot sign a test certificate");
  }
}

}  // namespace

TestAuthority::TestAuthority() : ca_(make("Brenmoor Test Authority", nullptr, -1, 365)) {
  X509* cert = ca_.cert.get();
  addExtension(cert, cert, NID_basic_constraints, "critical,CA:TRUE");
  addExtension(cert, cert, NID_key_usage, "critical,keyCertSign,cRLSign");
  addExtension(cert, cert, NID_subject_key_identifier, "hash");
  sign(ca_, ca_);
}

Certificate TestAuthority::issue(const std::string& altName, long fromDays, long toDays) const {
  Certificate made = make(altName.substr(altName.find(':') + 1), &ca_, fromDays, toDays);
  X509* cert = made.cert.get();
  addExtension(cert, ca_.cert.get(), NID_basic_constraints, "CA:FALSE");
  addExtension(cert, ca_.cert.get(), NID_subject_alt_name, altName.c_str());
  addExtension(cert, ca_.cert.get(), NID_ext_key_usage, "serverAuth");
  addExtension(cert, ca_.cert.get(), NID_authority_key_identifier, "keyid:always");
  sign(made, ca_);
  return made;
}

void TestAuthority::save(const std::string& path) const {
  FILE* file = std::fopen(path.c_str(), "w");
  if (!file || PEM_write_X509(file, ca_.cert.get()) != 1) {
    if (file) std::fclose(file);
    throw std::runtime_error("cannot write " + path);
  }
  std::fclose(file);
}

TlsServer::TlsServer(const Certificate& certificate, Answer answer)
    : server_(std::make_unique<httplib::SSLServer>(certificate.cert.get(), certificate.key.get())) {
  if (!server_->is_valid()) throw std::runtime_error("cannot start the TLS server");
  server_->set_keep_alive_timeout(1);
  server_->Post(".*", [this, answer](const httplib::Request& in, httplib::Response& out) {
    RecordedRequest r;
    r.method = in.method;
    r.target = in.target;
    r.version = in.version;
    for (const auto& [name, value] : in.headers) r.headers.emplace_back(name, value);
    r.body = in.body;
    out.set_content(answer(r), "text/xml; charset=utf-8");
    std::lock_guard lock(mutex_);
    requests_.push_back(std::move(r));
  });
  port_ = server_->bind_to_any_port("127.0.0.1");
  if (port_ <= 0) throw std::runtime_error("cannot bind the TLS server");
  thread_ = std::thread([this] { server_->listen_after_bind(); });
  // stop() does nothing to a server not yet running, so the destructor waits for it.
  for (int i = 0; i < 5000 && !server_->is_running(); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

TlsServer::~TlsServer() {
  server_->stop();
  thread_.join();
}

std::string TlsServer::baseUrl() const {
  return "https://127.0.0.1:" + std::to_string(port_);
}

std::vector<RecordedRequest> TlsServer::requests() const {
  std::lock_guard lock(mutex_);
  return requests_;
}

}  // namespace brenmoor::testing
