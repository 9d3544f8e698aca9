// Files of tagged values. docs/hyperfile.md tells the bytes.
#ifndef HOST_FILES_HYPERFILE_H
#define HOST_FILES_HYPERFILE_H

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "files/bytefile.h"
#include "kelvar.framework/source/tables/t_hyperfile.h"
#include "scene/gedata.h"
#include "scene/links.h"

// The entries of the boundary hold `turn` while they run; so does who calls these, where others could. What
// fails sets the error, and leaves the place in the file as it is.
struct HyperFile {
  static constexpr int32_t kVersion = 1;

  ~HyperFile() { Close(); }

  bool Open(int32_t ident, const std::string& path, int32_t wantedMode);
  bool Close();

  // Values of a fixed size, of which each has a tag (HyperFileValue).
  template <class Plain>
  bool Write(int32_t tag, const Plain& value) {
    return WriteBytes(tag, &value, sizeof value);
  }
  template <class Plain>
  bool Read(int32_t tag, Plain& value) {
    return ReadBytes(tag, &value, sizeof value);
  }

  bool WriteInt32(int32_t value) { return Write(HYPERFILE_VALUE_INT32, value); }
  bool ReadInt32(int32_t& value) { return Read(HYPERFILE_VALUE_INT32, value); }
  bool WriteUInt64(uint64_t value) { return Write(HYPERFILE_VALUE_UINT64, value); }
  bool ReadUInt64(uint64_t& value) { return Read(HYPERFILE_VALUE_UINT64, value); }

  // Those that have a length in the file: texts, paths, blocks, and what is made of these.
  bool WriteSized(int32_t tag, std::string_view bytes);
  bool ReadSized(int32_t tag, std::string& bytes);
  // The length of the next value, which is of that tag.
  bool PeekSized(int32_t tag, uint64_t& bytes);
  // A block, to where there is room for what PeekSized answered.
  bool ReadSizedInto(int32_t tag, void* to, uint64_t bytes);

  // Things side by side, as a block.
  template <class Plain>
  bool WriteArray(const std::vector<Plain>& array) {
    static_assert(std::is_trivially_copyable_v<Plain>);
    return WriteSized(HYPERFILE_VALUE_MEMORY,
                      {reinterpret_cast<const char*>(array.data()), array.size() * sizeof(Plain)});
  }
  template <class Plain>
  bool ReadArray(std::vector<Plain>& array) {
    uint64_t bytes;
    if (!PeekSized(HYPERFILE_VALUE_MEMORY, bytes)) return false;
    if (bytes % sizeof(Plain)) return Fail(HYPERFILE_ERROR_FORMAT);
    std::vector<Plain> made(bytes / sizeof(Plain));
    if (!ReadSizedInto(HYPERFILE_VALUE_MEMORY, made.data(), bytes)) return false;
    array = std::move(made);
    return true;
  }

  bool WriteContainer(const BaseContainer& container);
  bool ReadContainer(BaseContainer& container);
  bool WriteData(const HostGeData& data);
  bool ReadData(host::Value& data);

  int32_t NextTag();
  bool Skip(int32_t tag);

  bool BeginChunk(int32_t id, int32_t level);
  bool EndChunk();
  // At the end of what there is to read false, without an error.
  bool EnterChunk(int32_t& id, int32_t& level);
  bool LeaveChunk(bool skipsRest);

  bool CanRead() { return mode_ == HYPERFILE_READ || Fail(HYPERFILE_ERROR_USE); }
  bool CanWrite() { return mode_ == HYPERFILE_WRITE || Fail(HYPERFILE_ERROR_USE); }

  bool Fail(int32_t reason) {
    error = reason;
    return false;
  }

  // A place in a file that is read, for a return to it.
  struct Place {
    uint64_t position;
    std::vector<uint64_t> chunks;
  };
  Place Here() const { return {position_, chunks_}; }
  void GoTo(Place place) {
    position_ = place.position;
    chunks_ = std::move(place.chunks);
  }
  size_t Depth() const { return chunks_.size(); }
  bool IsAtEnd() const { return position_ >= End(); }

  // What is written in its scope stays in memory, and is taken back unless it was kept.
  class Draft {
   public:
    explicit Draft(HyperFile& file)
        : file_(file), size_(file.out_.Size()), depth_(file.chunks_.size()), wasKept_(file.out_.Keep(true)) {}
    Draft(const Draft&) = delete;
    Draft& operator=(const Draft&) = delete;
    ~Draft() {
      if (isGood_) return;
      file_.out_.Cut(size_);
      file_.chunks_.resize(depth_);
      file_.out_.Keep(wasKept_);
    }
    // False when it could not be written.
    bool Accept() {
      isGood_ = true;
      file_.out_.Keep(wasKept_);
      return !file_.out_.HasFailed() || file_.Fail(HYPERFILE_ERROR_WRITE);
    }

   private:
    HyperFile& file_;
    const uint64_t size_;
    const size_t depth_;
    const bool wasKept_;
    bool isGood_ = false;
  };

  // The chunks that are open are not for others: neither ended nor left by them; nor is the file closed.
  class Fence {
   public:
    explicit Fence(HyperFile& file)
        : file_(file), before_(std::exchange(file.fence_, file.chunks_.size() + 1)) {}
    Fence(const Fence&) = delete;
    Fence& operator=(const Fence&) = delete;
    ~Fence() { file_.fence_ = before_; }

   private:
    HyperFile& file_;
    const size_t before_;
  };

  std::recursive_mutex turn;
  std::atomic<int32_t> error{HYPERFILE_ERROR_NONE};
  std::atomic<int32_t> version{0};      // of the open file
  std::atomic<int32_t> filterFlags{0};  // for who loads or saves a scene

  // What stands for a link: its number, 0 for none. On reading a number is a link without a slot, with the
  // number for its generation, until those that it means are there.
  std::function<uint64_t(HostLink)> numberOf;
  bool keepsNumbers = false;

  // While an element of that document, which may be null, is worked on.
  class InDocument {
   public:
    InDocument(HyperFile& file, host::Linkable* document);
    InDocument(const InDocument&) = delete;
    InDocument& operator=(const InDocument&) = delete;
    ~InDocument() { file_.SetDocument(before_); }

   private:
    HyperFile& file_;
    const HostLink before_;
  };
  HostLink Document() const {
    std::lock_guard guard(documentLock_);
    return document_;
  }

 private:
  bool OpenForReading(int32_t ident, const std::string& path);
  bool OpenForWriting(int32_t ident, const std::string& path);
  bool WriteBytes(int32_t tag, const void* data, uint64_t bytes);
  bool ReadBytes(int32_t tag, void* data, uint64_t bytes);
  // Whether the next value is of that tag, and so many bytes follow it.
  bool IsNext(int32_t tag, uint64_t bytes);
  bool Take(uint64_t at, void* to, uint64_t bytes);
  uint64_t End() const { return chunks_.empty() ? in_.Size() : chunks_.back(); }

  void SetDocument(const HostLink& link) {
    std::lock_guard guard(documentLock_);
    document_ = link;
  }

  int32_t mode_ = 0;
  host::FileReader in_;
  host::FileWriter out_;
  uint64_t position_ = 0;
  std::vector<uint64_t> chunks_;  // the open ones: where their content ends, or where their length is to stand
  size_t fence_ = 0;              // 1 above the number of chunks that are not for others; 0: none
  mutable std::mutex documentLock_;
  HostLink document_{};
};

#endif
