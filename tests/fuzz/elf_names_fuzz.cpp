// The shared-object name in an ELF file: any bytes, and well-formed files with a name that must come out.
#include "ZULLib/file_version_internal.h"
#include "tests/fuzz/fuzz_input.h"
#include "tests/support/temporary_folder.h"

namespace {

using fuzz::require;

void number(std::string& out, std::uint64_t value, int bytes, bool bigEndian) {
    for (int i = 0; i < bytes; ++i) {
        const int place = bigEndian ? bytes - 1 - i : i;
        out.push_back(static_cast<char>(value >> (8 * place) & 0xFFU));
    }
}

// Header, a load and a dynamic segment, four dynamic records and their end, strings.
std::string elf(const std::string& name, bool wide, bool big) {
    const int word = wide ? 8 : 4;
    const std::uint64_t header = wide ? 64 : 52;
    const std::uint64_t segment = wide ? 56 : 32;
    const std::uint64_t dynamic = header + 2 * segment;
    const std::uint64_t strings = dynamic + 4 * 2 * static_cast<std::uint64_t>(word);
    const std::uint64_t base = 0x10000;
    std::string out = {'\x7F', 'E', 'L', 'F', wide ? '\2' : '\1', big ? '\2' : '\1', '\1'};
    out.resize(16, '\0');
    const auto put = [&](std::uint64_t value, int bytes) { number(out, value, bytes, big); };
    put(3, 2);
    put(62, 2);
    put(1, 4);
    for (const std::uint64_t value : {std::uint64_t{0}, header, std::uint64_t{0}}) put(value, word);
    put(0, 4);
    for (const std::uint64_t value : {header, segment, std::uint64_t{2}}) put(value, 2);
    for (int i = 0; i < 3; ++i) put(0, 2);
    const auto putSegment = [&](std::uint64_t type, std::uint64_t offset, std::uint64_t size) {
        put(type, 4);
        if (wide) put(0, 4);
        for (const std::uint64_t value : {offset, base + offset, base + offset, size, size}) put(value, word);
        if (!wide) put(0, 4);
        put(8, word);
    };
    putSegment(1, 0, strings + name.size() + 2);
    putSegment(2, dynamic, strings - dynamic);
    const std::uint64_t records[4][2] = {{5, base + strings}, {10, name.size() + 2}, {14, 1}, {0, 0}};
    for (const auto& record : records) {
        put(record[0], word);
        put(record[1], word);
    }
    return out + '\0' + name + '\0';
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::Input input(bytes, size);
    const std::string file = (fuzz::emptyFolder() / "a.so").string();
    const unsigned kind = input.byte();
    if (kind % 4U == 0) {
        const std::string name = input.text(200);
        test::writeBytes(file, elf(name.substr(0, name.find('\0')), (kind & 4U) != 0, (kind & 8U) != 0));
        const zul::posix::ElfName found = zul::posix::elfSharedObjectName(file);
        require(found.isElf && found.name == name.substr(0, name.find('\0')), "the name that was written");
        return 0;
    }
    const std::string content = input.rest();
    test::writeBytes(file, content);
    const zul::posix::ElfName found = zul::posix::elfSharedObjectName(file);
    require(found.isElf == (content.size() >= 16 && content.compare(0, 4,
                                                                    "\x7F"
                                                                    "ELF") == 0),
            "by its first bytes");
    require(found.name.empty() || content.find(found.name) != std::string::npos, "a name is in the file");
    return 0;
}
