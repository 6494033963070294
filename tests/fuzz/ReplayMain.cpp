// Without libFuzzer (a GCC build), each fuzz target is this program: it runs the target once on every
// file below the folders it is given (the seed corpus and the inputs of past findings).
#include <QDirIterator>
#include <QFile>

#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char* argv[])
{
    int inputs = 0;
    for (int i = 1; i < argc; ++i) {
        QDirIterator it(QFile::decodeName(argv[i]), QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            QFile file(it.next());
            if (!file.open(QIODevice::ReadOnly)) {
                std::fprintf(stderr, "cannot read %s\n", qPrintable(file.fileName()));
                return 1;
            }
            const QByteArray bytes = file.readAll();
            LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.constData()), size_t(bytes.size()));
            ++inputs;
        }
    }
    std::printf("%d inputs, no finding\n", inputs);
    return inputs > 0 ? 0 : 1;
}
