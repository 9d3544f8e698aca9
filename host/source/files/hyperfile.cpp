#include "files/hyperfile.h"

#include <bit>
#include <cstring>
#include <utility>

namespace {

static_assert(std::endian::native == std::endian::little, "values are written as they lie in memory");

constexpr char kMagic[8] = {'\x89', 'Q', 'L', 'X', '\r', '\n', '\x1a', '\n'};

struct Header {
  char magic[8];
  int32_t version;
  int32_t ident;
  uint64_t content;  // how many bytes follow
};
static_assert(sizeof(Header) == 24);

struct ChunkHead {
  int32_t id;
  int32_t level;
  uint64_t content;
};
static_assert(sizeof(ChunkHead) == 16);

constexpr uint64_t kVaries = ~uint64_t(0);

uint64_t SizeOf(int32_t tag) {
  switch (tag) {
    case HYPERFILE_VALUE_BOOL:
    case HYPERFILE_VALUE_INT8:
    case HYPERFILE_VALUE_UINT8:
      return 1;
    case HYPERFILE_VALUE_INT16:
    case HYPERFILE_VALUE_UINT16:
      return 2;
    case HYPERFILE_VALUE_INT32:
    case HYPERFILE_VALUE_UINT32:
    case HYPERFILE_VALUE_FLOAT32:
      return 4;
    case HYPERFILE_VALUE_INT64:
    case HYPERFILE_VALUE_UINT64:
    case HYPERFILE_VALUE_FLOAT64:
      return 8;
    case HYPERFILE_VALUE_TIME:
      return sizeof(BaseTime);
    case HYPERFILE_VALUE_VECTOR32:
      return sizeof(Vector32);
    case HYPERFILE_VALUE_VECTOR64:
      return sizeof(Vector);
    case HYPERFILE_VALUE_MATRIX32:
      return sizeof(Matrix32);
    case HYPERFILE_VALUE_MATRIX64:
      return sizeof(Matrix);
    default:
      return kVaries;
  }
}

}  // namespace

bool HyperFile::Open(int32_t ident, const std::string& path, int32_t wantedMode) {
  if (mode_ != 0) return Fail(HYPERFILE_ERROR_USE);
  error = HYPERFILE_ERROR_NONE;
  if (wantedMode != HYPERFILE_READ && wantedMode != HYPERFILE_WRITE) return Fail(HYPERFILE_ERROR_USE);
  const bool isOpen = wantedMode == HYPERFILE_READ ? OpenForReading(ident, path) : OpenForWriting(ident, path);
  if (!isOpen) {
    in_.Close();
    out_.Discard();
    return false;
  }
  mode_ = wantedMode;
  return true;
}

bool HyperFile::OpenForReading(int32_t ident, const std::string& path) {
  if (!in_.Open(path)) return Fail(HYPERFILE_ERROR_OPEN);
  Header header;
  if (in_.Size() < sizeof header) return Fail(HYPERFILE_ERROR_FORMAT);
  if (!in_.Read(0, &header, sizeof header)) return Fail(HYPERFILE_ERROR_READ);
  if (std::memcmp(header.magic, kMagic, sizeof kMagic)) return Fail(HYPERFILE_ERROR_FORMAT);
  if (header.version > kVersion) return Fail(HYPERFILE_ERROR_VERSION);
  if (header.version < 1 || header.content != in_.Size() - sizeof header) return Fail(HYPERFILE_ERROR_FORMAT);
  if (header.ident != ident) return Fail(HYPERFILE_ERROR_IDENT);
  version = header.version;
  position_ = sizeof header;
  return true;
}

bool HyperFile::OpenForWriting(int32_t ident, const std::string& path) {
  if (!out_.Create(path)) return Fail(HYPERFILE_ERROR_OPEN);
  Header header{{}, kVersion, ident, 0};
  std::memcpy(header.magic, kMagic, sizeof kMagic);
  if (!out_.Append(&header, sizeof header)) return Fail(HYPERFILE_ERROR_WRITE);
  version = kVersion;
  return true;
}

bool HyperFile::Close() {
  if (fence_ > 0) return Fail(HYPERFILE_ERROR_USE);
  const int32_t before = std::exchange(mode_, 0);
  const bool hasOpenChunks = before == HYPERFILE_WRITE && !chunks_.empty();
  chunks_.clear();
  version = 0;
  in_.Close();
  if (before != HYPERFILE_WRITE) return before != 0 || Fail(HYPERFILE_ERROR_USE);
  if (hasOpenChunks) {
    out_.Discard();
    return Fail(HYPERFILE_ERROR_USE);
  }
  const uint64_t content = out_.Size() - sizeof(Header);
  return (out_.Patch(offsetof(Header, content), content) && out_.Finish()) ||
         (out_.Discard(), Fail(HYPERFILE_ERROR_WRITE));
}

bool HyperFile::WriteBytes(int32_t tag, const void* data, uint64_t bytes) {
  if (!CanWrite()) return false;
  const auto byte = uint8_t(tag);
  return (out_.Append(&byte, 1) && out_.Append(data, bytes)) || Fail(HYPERFILE_ERROR_WRITE);
}

bool HyperFile::WriteSized(int32_t tag, std::string_view bytes) {
  const uint64_t size = bytes.size();
  return WriteBytes(tag, &size, sizeof size) &&
         (out_.Append(bytes.data(), size) || Fail(HYPERFILE_ERROR_WRITE));
}

bool HyperFile::Take(uint64_t at, void* to, uint64_t bytes) {
  return in_.Read(at, to, bytes) || Fail(HYPERFILE_ERROR_READ);
}

int32_t HyperFile::NextTag() {
  if (!CanRead()) return false;
  uint8_t tag = 0;
  return position_ < End() && Take(position_, &tag, 1) ? tag : 0;
}

bool HyperFile::IsNext(int32_t tag, uint64_t bytes) {
  if (!CanRead()) return false;
  if (position_ >= End()) return Fail(HYPERFILE_ERROR_END);
  uint8_t next;
  if (!Take(position_, &next, 1)) return false;
  if (next != tag) return Fail(HYPERFILE_ERROR_VALUE);
  return bytes <= End() - position_ - 1 || Fail(HYPERFILE_ERROR_FORMAT);
}

bool HyperFile::ReadBytes(int32_t tag, void* data, uint64_t bytes) {
  if (!IsNext(tag, bytes) || !Take(position_ + 1, data, bytes)) return false;
  position_ += 1 + bytes;
  return true;
}

bool HyperFile::PeekSized(int32_t tag, uint64_t& bytes) {
  uint64_t size;
  if (!IsNext(tag, sizeof size) || !Take(position_ + 1, &size, sizeof size)) return false;
  if (size > End() - position_ - 1 - sizeof size) return Fail(HYPERFILE_ERROR_FORMAT);
  if (host::IsTooLarge(size)) return Fail(HYPERFILE_ERROR_MEMORY);
  bytes = size;
  return true;
}

bool HyperFile::ReadSizedInto(int32_t tag, void* to, uint64_t bytes) {
  uint64_t there;
  if (!PeekSized(tag, there)) return false;
  if (there != bytes) return Fail(HYPERFILE_ERROR_VALUE);
  if (!Take(position_ + 1 + sizeof bytes, to, bytes)) return false;
  position_ += 1 + sizeof bytes + bytes;
  return true;
}

bool HyperFile::ReadSized(int32_t tag, std::string& bytes) {
  uint64_t size;
  if (!PeekSized(tag, size)) return false;
  std::string made;
  try {
    made.resize(size);
  } catch (const std::bad_alloc&) {
    return Fail(HYPERFILE_ERROR_MEMORY);
  }
  if (!ReadSizedInto(tag, made.data(), size)) return false;
  bytes = std::move(made);
  return true;
}

bool HyperFile::Skip(int32_t tag) {
  if (tag == HYPERFILE_VALUE_CHUNK_START) {
    int32_t id, level;
    if (NextTag() != tag) return IsNext(tag, 0);
    return EnterChunk(id, level) && LeaveChunk(true);
  }
  const uint64_t size = SizeOf(tag);
  if (size != kVaries) {
    if (!IsNext(tag, size)) return false;
    position_ += 1 + size;
    return true;
  }
  uint64_t length;
  if (!IsNext(tag, sizeof length)) return false;
  // What nobody knows has no length that could be trusted.
  if (tag < HYPERFILE_VALUE_STRING || tag > HYPERFILE_VALUE_DATA) return Fail(HYPERFILE_ERROR_FORMAT);
  if (!Take(position_ + 1, &length, sizeof length)) return false;
  if (length > End() - position_ - 1 - sizeof length) return Fail(HYPERFILE_ERROR_FORMAT);
  position_ += 1 + sizeof length + length;
  return true;
}

bool HyperFile::BeginChunk(int32_t id, int32_t level) {
  const ChunkHead head{id, level, 0};
  const uint64_t at = out_.Size() + 1 + offsetof(ChunkHead, content);
  if (!Write(HYPERFILE_VALUE_CHUNK_START, head)) return false;
  chunks_.push_back(at);
  return true;
}

bool HyperFile::EndChunk() {
  if (!CanWrite()) return false;
  if (chunks_.empty() || chunks_.size() < fence_) return Fail(HYPERFILE_ERROR_USE);
  const uint64_t at = chunks_.back();
  const uint64_t content = out_.Size() - at - sizeof content;
  if (!out_.Patch(at, content)) return Fail(HYPERFILE_ERROR_WRITE);
  chunks_.pop_back();
  return WriteBytes(HYPERFILE_VALUE_CHUNK_END, nullptr, 0);
}

// The end is looked for at once, so that it is where LeaveChunk goes.
bool HyperFile::EnterChunk(int32_t& id, int32_t& level) {
  if (mode_ == HYPERFILE_READ && position_ >= End()) return false;
  ChunkHead head;
  if (!IsNext(HYPERFILE_VALUE_CHUNK_START, sizeof head) || !Take(position_ + 1, &head, sizeof head))
    return false;
  const uint64_t begin = position_ + 1 + sizeof head;
  if (head.content >= End() - begin) return Fail(HYPERFILE_ERROR_FORMAT);
  uint8_t tag;
  if (!Take(begin + head.content, &tag, 1)) return false;
  if (tag != HYPERFILE_VALUE_CHUNK_END) return Fail(HYPERFILE_ERROR_FORMAT);
  chunks_.push_back(begin + head.content);
  position_ = begin;
  id = head.id;
  level = head.level;
  return true;
}

bool HyperFile::LeaveChunk(bool skipsRest) {
  if (mode_ != HYPERFILE_READ || chunks_.empty() || chunks_.size() < fence_) return Fail(HYPERFILE_ERROR_USE);
  if (!skipsRest && position_ != chunks_.back()) return Fail(HYPERFILE_ERROR_VALUE);
  position_ = chunks_.back() + 1;
  chunks_.pop_back();
  return true;
}

HyperFile::InDocument::InDocument(HyperFile& file, host::Linkable* document)
    : file_(file), before_(file.Document()) {
  HostLink link{};
  if (document) document->Link(link);
  file.SetDocument(link);
}
