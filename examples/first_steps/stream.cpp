// Writes lines into a buffer in memory, and reads them back.
//
// Prints:
//     [first] [second] [no line end]
//     24 bytes, CRC-32 F95B8198

#include <iostream>
#include <string>

#include <tam/status.h>
#include <tam/stream.h>

using namespace tam;

int main()
{
    Tam_status status;
    Tam_memory_buffer buffer;
    Tam_ostream out(buffer, status, TAM_EOL_LF);
    out.writeln("first", status);
    out.writeln("second", status);
    out.write(11, "no line end", status);
    if (!status.ok()) {
        return 1;
    }

    // A reader of the same buffer, at a position of its own, which takes any line end.
    Tam_buffered_istream in(buffer, false, status);
    std::wcout << L"[";
    for (std::string line; status.ok();) {
        in.readln(80, line, status);
        if (status.ok() || status == TAM_E_NO_LINE_END) { // whole lines, and what stands behind the last line end
            std::wcout << std::wstring(line.begin(), line.end()) << (status.ok() ? L"] [" : L"]\n");
        }
    }

    Tam_crc32 crc;
    crc.update(buffer, status);
    std::wcout << out.tell() << L" bytes, CRC-32 " << std::hex << std::uppercase << crc.result() << L'\n';
}
