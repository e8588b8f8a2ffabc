// However a client's bytes arrive, no line past the limit is handed out, and every line handed
// out is a whole line of what was sent. The first byte chooses the size of the pieces.
#include "App/ControlLineReader.h"
#include "FuzzCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    const qsizetype piece = 1 + data[0] % 64;
    const QByteArrayView sent(reinterpret_cast<const char *>(data) + 1, qsizetype(size) - 1);
    ControlLineReader reader;
    qsizetype handedOut = 0;
    for (qsizetype at = 0; at < sent.size(); at += piece) {
        for (const ControlLineReader::Line &line :
             reader.feed(sent.sliced(at, std::min(piece, sent.size() - at)))) {
            FUZZ_CHECK(line.text.size() <= ControlLineReader::maximumLineLength);
            FUZZ_CHECK(!line.text.contains('\n'));
            FUZZ_CHECK(!line.tooLong || line.text.isEmpty());
            FUZZ_CHECK(line.tooLong || sent.contains(line.text + '\n'));
            handedOut += line.text.size() + 1;
        }
    }
    FUZZ_CHECK(handedOut <= sent.size() + qsizetype(size));
    return 0;
}
