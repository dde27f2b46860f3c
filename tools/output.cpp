#include "tools/output.h"

#include <cerrno>
#include <cstddef>

namespace {

constexpr std::size_t kWorthAWrite = std::size_t{1} << 20;

}  // namespace

void FlushWhenFull(Output* out) {
  if (out->text.size() >= kWorthAWrite) Flush(out);
}

void Flush(Output* out) {
  if (out->file == nullptr) return;
  const std::size_t size = out->text.size();
  if (out->error == 0 && std::fwrite(out->text.data(), 1, size, out->file) != size) {
    out->error = errno;
  }
  out->text.clear();
}
