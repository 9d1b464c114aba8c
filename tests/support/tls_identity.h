#pragma once

#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include "support/loopback_server.h"

namespace moniva {

/// A key and a certificate that it signed itself, made in memory, for one host: "IP:127.0.0.1" or
/// "DNS:example.org". With its `channels` a LoopbackServer speaks TLS.
class TlsIdentity {
 public:
  explicit TlsIdentity(const std::string& host, long validFrom = -3'600)
      : key_(EVP_EC_gen("P-256"), EVP_PKEY_free),
        certificate_(X509_new(), X509_free),
        context_(SSL_CTX_new(TLS_server_method()), SSL_CTX_free) {
    X509* made = certificate_.get();
    X509_set_version(made, X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(made), 1);
    X509_gmtime_adj(X509_getm_notBefore(made), validFrom);
    X509_gmtime_adj(X509_getm_notAfter(made), validFrom + 7'200);
    X509_NAME_add_entry_by_txt(X509_get_subject_name(made), "CN", MBSTRING_ASC,
                               reinterpret_cast<const unsigned char*>("test"), -1, -1, 0);
    X509_set_issuer_name(made, X509_get_subject_name(made));
    X509_set_pubkey(made, key_.get());
    const std::unique_ptr<X509_EXTENSION, decltype(&X509_EXTENSION_free)> names(
        X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, host.c_str()), X509_EXTENSION_free);
    X509_add_ext(made, names.get(), -1);
    const bool sound = X509_sign(made, key_.get(), EVP_sha256()) > 0 &&
                       SSL_CTX_use_certificate(context_.get(), made) == 1 &&
                       SSL_CTX_use_PrivateKey(context_.get(), key_.get()) == 1;
    EXPECT_TRUE(sound) << "no certificate for " << host;
  }

  /// The certificate, for clients that are to trust it.
  std::string pem() const {
    const std::unique_ptr<BIO, decltype(&BIO_free)> memory(BIO_new(BIO_s_mem()), BIO_free);
    PEM_write_bio_X509(memory.get(), certificate_.get());
    char* bytes = nullptr;
    const long size = BIO_get_mem_data(memory.get(), &bytes);
    return {bytes, static_cast<std::size_t>(size)};
  }
  /// No newer version is spoken than this.
  void speakAtMost(int version) {
    SSL_CTX_set_security_level(context_.get(), 0);
    SSL_CTX_set_min_proto_version(context_.get(), TLS1_VERSION);
    SSL_CTX_set_max_proto_version(context_.get(), version);
  }
  /// This must outlive the server.
  LoopbackServer::Channels channels() {
    return [context = context_.get()](int socket) -> std::unique_ptr<LoopbackServer::Channel> {
      auto made = std::make_unique<TlsChannel>(context, socket);
      if (!made->accepted) return nullptr;
      return made;
    };
  }

 private:
  struct TlsChannel final : LoopbackServer::Channel {
    TlsChannel(SSL_CTX* context, int socket) : Channel(socket), session(SSL_new(context), SSL_free) {
      accepted = SSL_set_fd(session.get(), socket) == 1 && SSL_accept(session.get()) == 1;
    }
    ~TlsChannel() override {
      if (accepted) SSL_shutdown(session.get());
    }
    long read(char* bytes, std::size_t size) override {
      return SSL_read(session.get(), bytes, static_cast<int>(size));
    }
    long write(const char* bytes, std::size_t size) override {
      return SSL_write(session.get(), bytes, static_cast<int>(size));
    }
    std::unique_ptr<SSL, decltype(&SSL_free)> session;
    bool accepted = false;
  };

  std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key_;
  std::unique_ptr<X509, decltype(&X509_free)> certificate_;
  std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context_;
};

}  // namespace moniva
