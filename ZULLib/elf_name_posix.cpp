// The shared-object name in an ELF file, of either width and byte order. Nothing in the file is trusted: each
// offset is checked against the file before it is followed, and each loop has a bound of its own.
#include "ZULLib/file_version_internal.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "ZULLib/files_posix_internal.h"

namespace zul::posix {
namespace {

// A field of a record: its offset and its width in bytes.
struct Field {
    std::size_t offset;
    std::size_t width;
};

// The parts of the records that are needed here.
struct Layout {
    std::size_t headerSize;
    Field segmentTable, segmentSize, segmentCount;
    std::size_t segmentRecord;
    Field fileOffset, address, fileSize;
    std::size_t dynamicRecord;
    Field tag, value;
};

constexpr Layout kLayout32 = {52, {28, 4}, {42, 2}, {44, 2}, 32, {4, 4}, {8, 4}, {16, 4}, 8, {0, 4}, {4, 4}};
constexpr Layout kLayout64 = {64,      {32, 8}, {54, 2}, {56, 2}, 56,    {8, 8},
                              {16, 8}, {32, 8}, 16,      {0, 8},  {8, 8}};
constexpr Field kSegmentType = {0, 4};

constexpr std::uint64_t kLoadSegment = 1;
constexpr std::uint64_t kDynamicSegment = 2;
constexpr std::uint64_t kEndTag = 0;
constexpr std::uint64_t kStringTableTag = 5;
constexpr std::uint64_t kStringSizeTag = 10;
constexpr std::uint64_t kNameTag = 14;

// Real files have some ten segments, some fifty dynamic records and short names.
constexpr std::uint64_t kMaxSegments = 1024;
constexpr std::uint64_t kMaxDynamicRecords = 4096;
constexpr std::uint64_t kMaxName = 255;

using Record = std::array<unsigned char, 64>;  // the largest is the header of a 64-bit file

class ElfReader {
  public:
    explicit ElfReader(const InputFile& file) : file_(file) {
        Record header = {};
        constexpr std::size_t kIdentSize = 16;
        if (!file_.read(0, header.data(), kIdentSize)) return;
        isElf_ = header[0] == 0x7F && header[1] == 'E' && header[2] == 'L' && header[3] == 'F';
        const bool knownWidth = header[4] == 1 || header[4] == 2;
        const bool knownOrder = header[5] == 1 || header[5] == 2;
        if (!isElf_ || !knownWidth || !knownOrder) return;
        layout_ = header[4] == 1 ? &kLayout32 : &kLayout64;
        bigEndian_ = header[5] == 2;
        if (!file_.read(0, header.data(), layout_->headerSize)) return;
        if (get(header, layout_->segmentSize) != layout_->segmentRecord) return;
        segmentTable_ = get(header, layout_->segmentTable);
        segmentCount_ = std::min(get(header, layout_->segmentCount), kMaxSegments);
    }

    bool isElf() const { return isElf_; }

    std::string sharedObjectName() const {
        Record segment = {};
        for (std::uint64_t i = 0; i < segmentCount_ && readSegment(i, segment); ++i) {
            if (get(segment, kSegmentType) == kDynamicSegment) return nameFrom(segment);
        }
        return {};
    }

  private:
    // The part of the dynamic segment that leads to the name.
    struct NamePlace {
        std::uint64_t tableAddress = 0;
        std::uint64_t tableSize = 0;
        std::uint64_t nameOffset = 0;  // 0 is the empty string of every table
    };

    std::uint64_t get(const Record& record, Field field) const {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < field.width; ++i) {
            const std::size_t fromHighest = bigEndian_ ? i : field.width - 1 - i;
            value = value << 8 | record[field.offset + fromHighest];
        }
        return value;
    }

    bool readRecord(std::uint64_t table, std::uint64_t index, std::size_t recordSize, Record& record) const {
        if (table > file_.size()) return false;
        return file_.read(table + index * recordSize, record.data(), recordSize);
    }

    bool readSegment(std::uint64_t index, Record& segment) const {
        return readRecord(segmentTable_, index, layout_->segmentRecord, segment);
    }

    std::string nameFrom(const Record& dynamicSegment) const {
        const NamePlace place = namePlace(dynamicSegment);
        std::uint64_t table = 0;
        if (place.nameOffset == 0 || place.nameOffset >= place.tableSize) return {};
        if (!fileOffsetOf(place.tableAddress, table) || place.nameOffset > file_.size() - table) return {};
        const std::uint64_t start = table + place.nameOffset;
        const std::uint64_t inTable = place.tableSize - place.nameOffset;
        const std::uint64_t room = std::min({kMaxName + 1, inTable, file_.size() - start});
        std::string name(static_cast<std::size_t>(room), '\0');
        if (!file_.read(start, name.data(), name.size())) return {};
        const std::size_t end = name.find('\0');
        return end == std::string::npos ? std::string() : name.substr(0, end);
    }

    NamePlace namePlace(const Record& dynamicSegment) const {
        const std::uint64_t table = get(dynamicSegment, layout_->fileOffset);
        const std::uint64_t room = get(dynamicSegment, layout_->fileSize) / layout_->dynamicRecord;
        const std::uint64_t count = std::min(room, kMaxDynamicRecords);
        NamePlace place;
        Record record = {};
        for (std::uint64_t i = 0; i < count && readRecord(table, i, layout_->dynamicRecord, record); ++i) {
            const std::uint64_t tag = get(record, layout_->tag);
            const std::uint64_t value = get(record, layout_->value);
            if (tag == kEndTag) break;
            if (tag == kStringTableTag) place.tableAddress = value;
            if (tag == kStringSizeTag) place.tableSize = value;
            if (tag == kNameTag) place.nameOffset = value;
        }
        return place;
    }

    // Where an address of the loaded file lies in the file; true only for offsets within it.
    bool fileOffsetOf(std::uint64_t address, std::uint64_t& offset) const {
        Record segment = {};
        for (std::uint64_t i = 0; i < segmentCount_ && readSegment(i, segment); ++i) {
            const std::uint64_t first = get(segment, layout_->address);
            const std::uint64_t start = get(segment, layout_->fileOffset);
            if (get(segment, kSegmentType) != kLoadSegment || address < first) continue;
            const std::uint64_t inside = address - first;
            if (inside >= get(segment, layout_->fileSize)) continue;
            if (start > file_.size() || inside > file_.size() - start) return false;
            offset = start + inside;
            return true;
        }
        return false;
    }

    const InputFile& file_;
    const Layout* layout_ = &kLayout64;
    bool isElf_ = false;
    bool bigEndian_ = false;
    std::uint64_t segmentTable_ = 0;
    std::uint64_t segmentCount_ = 0;
};

}  // namespace

ElfName elfSharedObjectName(const std::string& file) {
    const InputFile input(file);
    const ElfReader reader(input);
    return {reader.isElf(), reader.sharedObjectName()};
}

}  // namespace zul::posix
