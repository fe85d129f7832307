// Message digests: MD5, SHA-1, SHA-256, SHA-384 and SHA-512 as plain value classes.
#pragma once

#include "common/ZQExport.h"

#include <cstddef>

namespace ZQCommonNS {

/// The hashing engine's running state behind a digest context; opaque outside the library.
struct ZQDigestState;

/// MD5 digest (RFC 1321) of a message given in pieces.
class ZQCOMMON_API MD5_CTX {
 public:
  MD5_CTX();
  /// A copy continues from the same point, independently of the original.
  MD5_CTX(const MD5_CTX& other);
  MD5_CTX& operator=(const MD5_CTX& other);
  ~MD5_CTX();

  /// Adds `length` bytes to the message; a null pointer adds nothing.
  void Update(const unsigned char* data, size_t length);
  /// Writes the 16-byte digest and starts a new message; a null output changes nothing.
  void Final(unsigned char* digest);

 private:
  ZQDigestState* m_state;
};

/// SHA-1 digest (FIPS 180) with a status on every step.
class ZQCOMMON_API SHA1_CTX {
 public:
  /// Statuses of Update and Final.
  enum Status {
    SHA_SUCCESS = 0,         ///< done
    SHA_NULL = 1,            ///< a null pointer was given where bytes were needed
    SHA_INPUT_TOO_LONG = 2,  ///< the message passed 2^64 - 1 bits
    SHA_STATE_ERROR = 3      ///< bytes were added after Final, or the engine failed
  };

  SHA1_CTX();
  /// A copy continues from the same point, status included.
  SHA1_CTX(const SHA1_CTX& other);
  SHA1_CTX& operator=(const SHA1_CTX& other);
  ~SHA1_CTX();

  /// Adds `length` bytes; after Final this fails and the context keeps the failure.
  int Update(const unsigned char* data, unsigned length);
  /// Writes the 20-byte digest, the same on every call; a held failure is returned at once.
  int Final(unsigned char* digest);

 private:
  ZQDigestState* m_state;
  int m_status;
};

/// SHA-256 digest (FIPS 180) of a message given in pieces.
class ZQCOMMON_API SHA256_CTX {
 public:
  SHA256_CTX();
  /// A copy continues from the same point, independently of the original.
  SHA256_CTX(const SHA256_CTX& other);
  SHA256_CTX& operator=(const SHA256_CTX& other);
  ~SHA256_CTX();

  /// Adds `length` bytes to the message; a null pointer adds nothing.
  void Update(const unsigned char* data, size_t length);
  /// Writes the 32-byte digest and starts a new message; a null output changes nothing.
  void Final(unsigned char* digest);

 protected:
  /// Adds one whole 64-byte block to the message.
  void Transform(const unsigned char* block);

 private:
  ZQDigestState* m_state;
};

/// SHA-384 digest (FIPS 180) of a message given in pieces.
class ZQCOMMON_API SHA384_CTX {
 public:
  SHA384_CTX();
  /// A copy continues from the same point, independently of the original.
  SHA384_CTX(const SHA384_CTX& other);
  SHA384_CTX& operator=(const SHA384_CTX& other);
  ~SHA384_CTX();

  /// Adds `length` bytes to the message; a null pointer adds nothing.
  void Update(const unsigned char* data, size_t length);
  /// Writes the 48-byte digest and starts a new message; a null output changes nothing.
  void Final(unsigned char* digest);

 private:
  ZQDigestState* m_state;
};

/// SHA-512 digest (FIPS 180) of a message given in pieces.
class ZQCOMMON_API SHA512_CTX {
 public:
  SHA512_CTX();
  /// A copy continues from the same point, independently of the original.
  SHA512_CTX(const SHA512_CTX& other);
  SHA512_CTX& operator=(const SHA512_CTX& other);
  ~SHA512_CTX();

  /// Adds `length` bytes to the message; a null pointer adds nothing.
  void Update(const unsigned char* data, size_t length);
  /// Writes the 64-byte digest and starts a new message; a null output changes nothing.
  void Final(unsigned char* digest);

 protected:
  /// Adds one whole 128-byte block to the message.
  void Transform(const unsigned char* block);
  /// Closes the message (padding and length) and keeps its digest for the next Final; bytes
  /// added after it start a new message.
  void Last();

 private:
  ZQDigestState* m_state;
};

}  // namespace ZQCommonNS
