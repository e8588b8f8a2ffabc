// An address is accepted only as the exact text it was given, and a reference resolved against a
// base gives an address that reads back as itself. Input: base, a line break, the reference.
#include "Base/WebAddress.h"
#include "FuzzCheck.h"

#include <QString>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString input = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    const qsizetype split = input.indexOf(u'\n');
    const QString baseText = split < 0 ? input : input.first(split);
    const QString reference = split < 0 ? QString() : input.sliced(split + 1);
    const std::optional<WebAddress> base = WebAddress::fromText(baseText);
    if (!base)
        return 0;
    FUZZ_CHECK(base->text() == baseText);
    if (const std::optional<WebAddress> resolved = WebAddress::fromText(reference, *base)) {
        FUZZ_CHECK(WebAddress::fromText(resolved->text()) == resolved);
        (void)resolved->host();
        (void)resolved->pathComponents();
        (void)resolved->queryItems();
    }
    return 0;
}
