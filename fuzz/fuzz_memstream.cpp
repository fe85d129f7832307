// Drives a ZQMemStream through a random sequence of operations and checks it against a plain
// string model wherever the result is defined. Input: one byte choosing the block size, then
// operations, each a byte choosing it followed by its arguments.
//
// The model holds the logical content (bytes written plus sources not yet read), which of its
// bytes are defined (a seek for output past the end leaves a gap of undefined bytes), and the
// get and put positions. Once keepMemory is turned off, positions restart as blocks are dropped,
// so from then on the operations only run, unchecked.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "common/ZQDigest.h"
#include "common/ZQMemStream.h"

using namespace ZQCommonNS;

namespace {

#define CHECK(cond)                                                           \
  do {                                                                        \
    if (!(cond)) {                                                            \
      std::fprintf(stderr, "check failed at line %d: %s\n", __LINE__, #cond); \
      std::abort();                                                           \
    }                                                                         \
  } while (0)

struct Input {
  const uint8_t* p;
  size_t n;
  bool empty() const { return n == 0; }
  uint8_t byte() {
    if (!n) return 0;
    --n;
    return *p++;
  }
  uint16_t u16() { return static_cast<uint16_t>(byte() | (byte() << 8)); }
  std::string bytes(size_t k) {
    k = k < n ? k : n;
    std::string s(reinterpret_cast<const char*>(p), k);
    p += k;
    n -= k;
    return s;
  }
};

enum GetState { GET_UNSET, GET_SET, GET_UNKNOWN };

struct Model {
  std::string data;
  std::vector<bool> known;
  size_t get = 0;
  size_t put = 0;
  GetState getState = GET_UNSET;
  bool valid = true;

  void write(const std::string& s) {
    if (data.size() < put + s.size()) {
      data.resize(put + s.size());
      known.resize(put + s.size(), false);
    }
    for (size_t i = 0; i < s.size(); ++i) {
      data[put + i] = s[i];
      known[put + i] = true;
    }
    put += s.size();
  }
  void extendTo(size_t size) {
    if (data.size() < size) {
      data.resize(size);
      known.resize(size, false);
    }
  }
  bool allKnown(size_t from, size_t to) const {
    for (size_t i = from; i < to && i < known.size(); ++i) {
      if (!known[i]) return false;
    }
    return true;
  }
  bool sameAs(const std::string& s, size_t from) const {
    if (from + s.size() > data.size()) return false;
    for (size_t i = 0; i < s.size(); ++i) {
      if (known[from + i] && data[from + i] != s[i]) return false;
    }
    return true;
  }
};

std::string md5(const std::string& s) {
  MD5_CTX ctx;
  ctx.Update(reinterpret_cast<const unsigned char*>(s.data()), s.size());
  unsigned char digest[16];
  ctx.Final(digest);
  return std::string(reinterpret_cast<const char*>(digest), 16);
}

uint32_t checksum(const std::string& s) {
  uint32_t sum = 0;
  for (size_t i = 0; i < s.size(); i += 4) {
    uint32_t word = 0;
    for (size_t k = 0; k < 4; ++k) {
      word = (word << 8) | (i + k < s.size() ? static_cast<unsigned char>(s[i + k]) : 0u);
    }
    sum += word;
  }
  return sum;
}

size_t tellGet(ZQMemStream& ms) {
  ms.clear();
  const std::streamoff pos = std::streamoff(ms.tellg());
  return pos < 0 ? 0 : static_cast<size_t>(pos);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  static const size_t kBlockSizes[8] = {1, 2, 3, 4, 5, 8, 16, 64};
  Input in{bytes, size};
  const size_t g = kBlockSizes[in.byte() & 7];
  ZQMemStream ms(nullptr, g);
  Model m;

  while (!in.empty()) {
    ms.clear();
    const uint8_t op = in.byte() % 22;
    const bool check = m.valid;
    switch (op) {
      case 0: {  // write
        const std::string s = in.bytes(in.byte() % 64);
        ms.write(s.data(), static_cast<std::streamsize>(s.size()));
        m.write(s);
        break;
      }
      case 1: {  // read
        const size_t want = in.byte() % 100;
        std::string got(want, '\0');
        ms.read(got.data(), static_cast<std::streamsize>(want));
        got.resize(static_cast<size_t>(ms.gcount()));
        if (check) {
          const size_t expect = std::min(want, m.data.size() - m.get);
          CHECK(got.size() == expect);
          CHECK(m.sameAs(got, m.get));
        }
        m.get += got.size();
        if (want > 0) m.getState = GET_SET;  // reading nothing asks the buffer nothing
        break;
      }
      case 2: {  // seek the get side
        const size_t pos = in.u16() % (m.data.size() + 8);
        ms.seekg(static_cast<std::streamoff>(pos));
        if (check) {
          CHECK(ms.fail() == (pos > m.data.size()));
          if (!ms.fail()) m.get = pos;
        }
        if (!ms.fail()) m.getState = GET_SET;  // a failed seek lays no get area
        break;
      }
      case 3: {  // seek the put side, possibly past the end
        const size_t pos = in.u16() % (m.data.size() + 3 * g + 1);
        ms.seekp(static_cast<std::streamoff>(pos));
        if (check) CHECK(!ms.fail());
        m.put = pos;
        m.extendTo(pos);
        break;
      }
      case 4: {  // put back a byte, the same or another
        const char c = static_cast<char>(in.byte());
        const bool before = m.get > 0;
        ms.putback(c);
        const bool ok = !ms.bad();
        if (check) CHECK(ok == before);
        if (ok) m.get -= 1;
        break;
      }
      case 5: {  // unget: fails at a block start, where no character is given back
        ms.unget();
        const bool ok = !ms.bad();
        if (check) {
          if (ok) CHECK(m.get > 0);
          if (m.getState == GET_SET && m.get % g != 0) CHECK(ok);
        }
        if (ok) m.get -= 1;
        break;
      }
      case 6: {  // searchSeek
        const std::string pattern = in.bytes(1 + in.byte() % 4);
        const size_t from = m.get;
        const bool found = ms.searchSeek(pattern.data(), pattern.size());
        m.getState = GET_SET;
        if (check && !pattern.empty() && m.allKnown(from, m.data.size())) {
          const size_t at = m.data.find(pattern, from);
          CHECK(found == (at != std::string::npos));
          if (found) m.get = at;
          CHECK(tellGet(ms) == m.get);
        } else {
          m.get = tellGet(ms);
        }
        break;
      }
      case 7: {  // skipSeek
        const std::string pattern = in.bytes(1 + in.byte() % 4);
        const bool matched = ms.skipSeek(pattern.data(), pattern.size());
        m.getState = GET_SET;
        if (check && !pattern.empty() && m.allKnown(m.get, m.get + pattern.size())) {
          const bool expect = m.data.compare(m.get, pattern.size(), pattern) == 0;
          CHECK(matched == expect);
          if (matched) m.get += pattern.size();
          CHECK(tellGet(ms) == m.get);
        } else {
          m.get = tellGet(ms);
        }
        break;
      }
      case 8: {  // seekEOL
        const bool stopped = ms.seekEOL();
        m.getState = GET_SET;
        if (check && m.allKnown(m.get, m.data.size())) {
          size_t i = m.get;
          bool seen = false;
          for (; i < m.data.size(); ++i) {
            const char c = m.data[i];
            if (c == '\r' || c == '\n') {
              seen = true;
            } else if (seen) {
              break;
            }
          }
          CHECK(stopped == (i < m.data.size()));
          m.get = i;
          CHECK(tellGet(ms) == m.get);
        } else {
          m.get = tellGet(ms);
        }
        break;
      }
      case 9: {  // trim
        const size_t n = in.u16() % (m.data.size() + 4);
        ms.trim(n);
        if (n < m.data.size()) {
          m.data.resize(n);
          m.known.resize(n);
          m.get = std::min(m.get, n);
          m.put = std::min(m.put, n);
          m.getState = GET_SET;
        }
        if (check) CHECK(ms.length() == m.data.size());
        break;
      }
      case 10: {  // a further source
        const std::string s = in.bytes(in.byte() % 64);
        ms.setSource(new std::istringstream(s), true);
        m.data += s;
        m.known.resize(m.data.size(), true);
        if (m.getState == GET_UNSET) m.getState = GET_UNKNOWN;
        break;
      }
      case 11: {  // copyStream
        const std::string s = in.bytes(in.byte() % 64);
        const size_t count = in.byte() % 80;
        std::istringstream source(s);
        const size_t copied = ms.copyStream(source, count);
        const std::string expect = s.substr(0, std::min(count, s.size()));
        if (check) CHECK(copied == expect.size());
        m.write(expect);
        break;
      }
      case 12: {  // getMD5
        const std::string digest = ms.getMD5();
        if (check && m.allKnown(m.get, m.data.size())) {
          if (digest.empty()) {
            CHECK(m.getState != GET_SET);
          } else {
            CHECK(digest == md5(m.data.substr(m.get)));
          }
        }
        break;
      }
      case 13: {  // calcOTFTableChecksum
        const uint32_t sum = ms.calcOTFTableChecksum();
        if (check && g % 4 == 0 && m.allKnown(0, m.data.size())) {
          CHECK(sum == checksum(m.data));
        }
        break;
      }
      case 14: {  // getBuffer
        const char* p = nullptr;
        const size_t n = ms.getBuffer(p);
        m.getState = GET_SET;
        if (check) {
          const size_t rest = m.data.size() - m.get;
          const size_t inBlock = g - m.get % g;
          CHECK(n == std::min(rest, inBlock));
          CHECK(m.sameAs(std::string(p, n), m.get));
        }
        m.get += n;
        break;
      }
      case 15: {  // appendToString
        std::string all;
        ms.appendToString(all);
        if (check) {
          CHECK(all.size() == m.data.size());
          CHECK(m.sameAs(all, 0));
        }
        break;
      }
      case 16: {  // length, tellg, tellp
        if (check) {
          CHECK(ms.length() == m.data.size());
          CHECK(tellGet(ms) == m.get);
          CHECK(static_cast<size_t>(std::streamoff(ms.tellp())) == m.put);
        } else {
          (void)ms.length();
          (void)ms.tellg();
          ms.clear();
          (void)ms.tellp();
        }
        m.getState = GET_SET;
        break;
      }
      case 17: {  // abandonBuffer
        const size_t before = m.data.size();
        ms.abandonBuffer();
        if (check) {
          const size_t after = ms.length();
          CHECK(after <= before);
          const size_t dropped = before - after;
          CHECK(dropped % g == 0);
          CHECK(dropped <= m.get);
          m.data.erase(0, dropped);
          m.known.erase(m.known.begin(), m.known.begin() + static_cast<std::ptrdiff_t>(dropped));
          m.get -= dropped;
          m.put = m.put < dropped ? 0 : m.put - dropped;
        }
        break;
      }
      case 18: {  // remove
        ms.remove();
        m.data.clear();
        m.known.clear();
        m.get = m.put = 0;
        m.getState = ms.getStreamBuf()->getBlockCount() > 0 ? GET_SET : GET_UNSET;
        break;
      }
      case 19: {  // keepMemory
        const bool keep = in.byte() & 1;
        ms.setKeepMemory(keep);
        if (!keep) m.valid = false;
        break;
      }
      case 20: {  // relative seek of the get side, and a look at one byte
        const int off = static_cast<int8_t>(in.byte());
        const long target = static_cast<long>(m.get) + off;
        ms.seekg(off, std::ios_base::cur);
        m.getState = GET_SET;
        if (check) {
          const bool ok = target >= 0 && static_cast<size_t>(target) <= m.data.size();
          CHECK(!ms.fail() == ok);
          if (ok) m.get = static_cast<size_t>(target);
          ms.clear();
          const int c = ms.peek();
          if (m.get < m.data.size()) {
            if (m.known[m.get]) CHECK(c == static_cast<unsigned char>(m.data[m.get]));
          } else {
            CHECK(c == std::char_traits<char>::eof());
          }
        } else {
          m.get = tellGet(ms);
        }
        break;
      }
      case 21: {  // copies
        if (m.data.size() > 4096) break;
        ZQMemStream copy(ms);
        m.getState = GET_SET;
        if (check) {
          std::string all;
          copy.appendToString(all);
          CHECK(all.size() == m.data.size());
          CHECK(m.sameAs(all, 0));
          CHECK(tellGet(copy) == m.get);
          CHECK(tellGet(ms) == m.get);
        }
        ZQMemStream other;
        const std::string s = in.bytes(in.byte() % 16);
        other << s;
        const size_t otherGet = s.empty() ? 0 : in.byte() % (s.size() + 1);
        other.seekg(static_cast<std::streamoff>(otherGet));
        ms = other;
        if (!s.empty()) {
          m.write(s);
          m.get = otherGet;
          m.put = s.size();
        }
        if (check) CHECK(tellGet(ms) == m.get);
        break;
      }
      default:
        break;
    }
  }
  return 0;
}
