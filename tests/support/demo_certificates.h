// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <string>
#include <utility>
#include <vector>

namespace zarn::demo {

/// A certificate and its private key, both PEM. Made for one run and never a real credential.
struct Certificate {
    std::string certificatePem;
    std::string keyPem;
};

enum class KeyKind { EcP256, Rsa2048, Rsa1024 };

/// What a certificate says. The defaults are those of a good server certificate without a name.
struct CertificateOptions {
    std::string commonName = "demonstration server";
    /// DNS names and IP addresses for the subject alternative name; empty leaves it out.
    std::vector<std::string> names;
    /// From now.
    std::chrono::seconds notBefore = -std::chrono::hours(1);
    std::chrono::seconds notAfter = std::chrono::hours(24 * 30);
    KeyKind key = KeyKind::EcP256;
    std::string digest = "SHA256";
    /// Further extensions, by their OpenSSL names and in its notation.
    std::vector<std::pair<std::string, std::string>> extensions
        = {{"basicConstraints", "critical,CA:FALSE"}, {"keyUsage", "critical,digitalSignature"},
            {"extendedKeyUsage", "serverAuth"}};
};

/// Options of a certificate authority.
CertificateOptions authorityOptions(std::string commonName);

/// Makes a key and a certificate for it, signed by `issuer` or, without one, by itself.
/// Ends the process with a message when the library refuses: a test cannot go on then.
Certificate makeCertificate(const CertificateOptions& options, const Certificate* issuer = nullptr);

} // namespace zarn::demo
