// Digest contexts over the EVP interface of libcrypto. Only EVP is used: the per-algorithm
// headers declare global types named like our classes.
#include "common/ZQDigest.h"

#include <openssl/evp.h>

#include <cstdint>
#include <cstring>
#include <new>

namespace ZQCommonNS {

struct ZQDigestState {
  EVP_MD_CTX* ctx = nullptr;
  // True once the message is closed: `digest` holds its result until a new message starts.
  bool closed = false;
  unsigned char digest[EVP_MAX_MD_SIZE] = {};
  // Bytes of the open message, for SHA-1's length limit.
  uint64_t bytes = 0;
  // The engine refused to start a message: the context is not touched again.
  bool broken = false;
};

namespace {

using MdGetter = const EVP_MD* (*)();

ZQDigestState* createState(MdGetter md) {
  auto* state = new (std::nothrow) ZQDigestState;
  if (!state) return nullptr;
  state->ctx = EVP_MD_CTX_new();
  if (!state->ctx || EVP_DigestInit_ex(state->ctx, md(), nullptr) != 1) {
    EVP_MD_CTX_free(state->ctx);
    delete state;
    return nullptr;
  }
  return state;
}

void destroyState(ZQDigestState* state) {
  if (!state) return;
  EVP_MD_CTX_free(state->ctx);
  delete state;
}

ZQDigestState* cloneState(const ZQDigestState* from) {
  if (!from) return nullptr;
  auto* state = new (std::nothrow) ZQDigestState;
  if (!state) return nullptr;
  state->ctx = EVP_MD_CTX_new();
  if (!state->ctx || EVP_MD_CTX_copy_ex(state->ctx, from->ctx) != 1) {
    EVP_MD_CTX_free(state->ctx);
    delete state;
    return nullptr;
  }
  state->closed = from->closed;
  std::memcpy(state->digest, from->digest, sizeof state->digest);
  state->bytes = from->bytes;
  state->broken = from->broken;
  return state;
}

// Copy assignment that leaves the target untouched when the copy cannot be made.
void assignState(ZQDigestState*& to, const ZQDigestState* from) {
  if (to == from) return;
  ZQDigestState* copy = cloneState(from);
  if (!copy && from) return;
  destroyState(to);
  to = copy;
}

// Starts a new message with the same algorithm; the context keeps its digest type.
bool restart(ZQDigestState* state) {
  state->closed = false;
  state->bytes = 0;
  if (EVP_DigestInit_ex(state->ctx, nullptr, nullptr) != 1) state->broken = true;
  return !state->broken;
}

bool update(ZQDigestState* state, const unsigned char* data, size_t length) {
  if (state->broken) return false;
  if (state->closed && !restart(state)) return false;
  if (length == 0) return true;
  state->bytes += length;
  return EVP_DigestUpdate(state->ctx, data, length) == 1;
}

// Closes the message into state->digest, once.
bool closeMessage(ZQDigestState* state) {
  if (state->closed) return true;
  if (state->broken) return false;
  if (EVP_DigestFinal_ex(state->ctx, state->digest, nullptr) != 1) return false;
  state->closed = true;
  return true;
}

// Final of the contexts without status: the digest out, then a fresh message.
void finalAndRestart(ZQDigestState* state, unsigned char* digest, size_t size) {
  if (!digest) return;
  if (!state || !closeMessage(state)) {
    // No engine: a neutral digest rather than undefined bytes.
    std::memset(digest, 0, size);
    return;
  }
  std::memcpy(digest, state->digest, size);
  restart(state);
}

void plainUpdate(ZQDigestState* state, const unsigned char* data, size_t length) {
  if (state && data) update(state, data, length);
}

}  // namespace

// MD5

MD5_CTX::MD5_CTX() : m_state(createState(EVP_md5)) {}
MD5_CTX::MD5_CTX(const MD5_CTX& other) : m_state(cloneState(other.m_state)) {}
MD5_CTX& MD5_CTX::operator=(const MD5_CTX& other) {
  assignState(m_state, other.m_state);
  return *this;
}
MD5_CTX::~MD5_CTX() { destroyState(m_state); }
void MD5_CTX::Update(const unsigned char* data, size_t length) {
  plainUpdate(m_state, data, length);
}
void MD5_CTX::Final(unsigned char* digest) { finalAndRestart(m_state, digest, 16); }

// SHA-1

SHA1_CTX::SHA1_CTX() : m_state(createState(EVP_sha1)), m_status(SHA_SUCCESS) {
  if (!m_state) m_status = SHA_STATE_ERROR;
}
SHA1_CTX::SHA1_CTX(const SHA1_CTX& other)
    : m_state(cloneState(other.m_state)), m_status(other.m_status) {
  if (!m_state) m_status = SHA_STATE_ERROR;
}
SHA1_CTX& SHA1_CTX::operator=(const SHA1_CTX& other) {
  if (this == &other) return *this;
  ZQDigestState* copy = cloneState(other.m_state);
  destroyState(m_state);
  m_state = copy;
  m_status = m_state ? other.m_status : SHA_STATE_ERROR;
  return *this;
}
SHA1_CTX::~SHA1_CTX() { destroyState(m_state); }

int SHA1_CTX::Update(const unsigned char* data, unsigned length) {
  if (length == 0) return SHA_SUCCESS;
  if (!data) return SHA_NULL;
  if (m_status != SHA_SUCCESS) return m_status;
  if (m_state->closed) return m_status = SHA_STATE_ERROR;
  // The message length is counted in 64 bits of bits: at most 2^61 - 1 bytes.
  constexpr uint64_t kMaxBytes = (uint64_t{1} << 61) - 1;
  if (m_state->bytes > kMaxBytes - length) return m_status = SHA_INPUT_TOO_LONG;
  if (!update(m_state, data, length)) return m_status = SHA_STATE_ERROR;
  return SHA_SUCCESS;
}

int SHA1_CTX::Final(unsigned char* digest) {
  if (!digest) return SHA_NULL;
  if (m_status != SHA_SUCCESS) return m_status;
  if (!closeMessage(m_state)) return m_status = SHA_STATE_ERROR;
  std::memcpy(digest, m_state->digest, 20);
  return SHA_SUCCESS;
}

// SHA-256

SHA256_CTX::SHA256_CTX() : m_state(createState(EVP_sha256)) {}
SHA256_CTX::SHA256_CTX(const SHA256_CTX& other) : m_state(cloneState(other.m_state)) {}
SHA256_CTX& SHA256_CTX::operator=(const SHA256_CTX& other) {
  assignState(m_state, other.m_state);
  return *this;
}
SHA256_CTX::~SHA256_CTX() { destroyState(m_state); }
void SHA256_CTX::Update(const unsigned char* data, size_t length) {
  plainUpdate(m_state, data, length);
}
void SHA256_CTX::Final(unsigned char* digest) { finalAndRestart(m_state, digest, 32); }
void SHA256_CTX::Transform(const unsigned char* block) { plainUpdate(m_state, block, 64); }

// SHA-384

SHA384_CTX::SHA384_CTX() : m_state(createState(EVP_sha384)) {}
SHA384_CTX::SHA384_CTX(const SHA384_CTX& other) : m_state(cloneState(other.m_state)) {}
SHA384_CTX& SHA384_CTX::operator=(const SHA384_CTX& other) {
  assignState(m_state, other.m_state);
  return *this;
}
SHA384_CTX::~SHA384_CTX() { destroyState(m_state); }
void SHA384_CTX::Update(const unsigned char* data, size_t length) {
  plainUpdate(m_state, data, length);
}
void SHA384_CTX::Final(unsigned char* digest) { finalAndRestart(m_state, digest, 48); }

// SHA-512

SHA512_CTX::SHA512_CTX() : m_state(createState(EVP_sha512)) {}
SHA512_CTX::SHA512_CTX(const SHA512_CTX& other) : m_state(cloneState(other.m_state)) {}
SHA512_CTX& SHA512_CTX::operator=(const SHA512_CTX& other) {
  assignState(m_state, other.m_state);
  return *this;
}
SHA512_CTX::~SHA512_CTX() { destroyState(m_state); }
void SHA512_CTX::Update(const unsigned char* data, size_t length) {
  plainUpdate(m_state, data, length);
}
void SHA512_CTX::Final(unsigned char* digest) { finalAndRestart(m_state, digest, 64); }
void SHA512_CTX::Transform(const unsigned char* block) { plainUpdate(m_state, block, 128); }
void SHA512_CTX::Last() {
  if (m_state) closeMessage(m_state);
}

}  // namespace ZQCommonNS
