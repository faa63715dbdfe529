#include "Sha256.h"

#ifdef _WIN32
#  include <windows.h>
#  include <bcrypt.h>
#else
#  include <openssl/evp.h>
#endif

#include <memory>

namespace tarnix::check {
namespace {

std::string Hex(const unsigned char* digest, size_t length) {
  static const char kDigits[] = "0123456789abcdef";
  std::string text;
  for (size_t i = 0; i < length; ++i) {
    text.push_back(kDigits[digest[i] >> 4]);
    text.push_back(kDigits[digest[i] & 0xF]);
  }
  return text;
}

#ifdef _WIN32
struct AlgorithmCloser {
  void operator()(void* algorithm) const { BCryptCloseAlgorithmProvider(algorithm, 0); }
};
struct HashCloser {
  void operator()(void* hash) const { BCryptDestroyHash(hash); }
};
using Algorithm = std::unique_ptr<void, AlgorithmCloser>;
using Hash = std::unique_ptr<void, HashCloser>;

bool Digest(const std::string& bytes, unsigned char (&digest)[32]) {
  BCRYPT_ALG_HANDLE algorithmHandle = nullptr;
  if (BCryptOpenAlgorithmProvider(&algorithmHandle, BCRYPT_SHA256_ALGORITHM, nullptr, 0) != 0) {
    return false;
  }
  const Algorithm algorithm(algorithmHandle);
  BCRYPT_HASH_HANDLE hashHandle = nullptr;
  if (BCryptCreateHash(algorithm.get(), &hashHandle, nullptr, 0, nullptr, 0, 0) != 0) {
    return false;
  }
  const Hash hash(hashHandle);
  auto* data = reinterpret_cast<PUCHAR>(const_cast<char*>(bytes.data()));
  return BCryptHashData(hash.get(), data, static_cast<ULONG>(bytes.size()), 0) == 0 &&
         BCryptFinishHash(hash.get(), digest, sizeof digest, 0) == 0;
}
#else
bool Digest(const std::string& bytes, unsigned char (&digest)[32]) {
  unsigned int length = 0;
  return EVP_Digest(bytes.data(), bytes.size(), digest, &length, EVP_sha256(), nullptr) == 1 &&
         length == sizeof digest;
}
#endif

}  // namespace

std::string Sha256Hex(const std::string& bytes) {
  unsigned char digest[32] = {};
  return Digest(bytes, digest) ? Hex(digest, sizeof digest) : std::string();
}

}  // namespace tarnix::check
