// The codec on what really travels: shell updates, long lists of entries, and large payloads.

#include "platform/channel/StandardMethodCodec.h"

#include <benchmark/benchmark.h>

namespace brevanholt::platform {
namespace {

Value transfer(int number) {
  return Map{{"title", "Sending to Ada’s laptop"},
             {"item", "Holiday photographs " + std::to_string(number) + ".zip"},
             {"stateKey", "complete"},
             {"progress", 0.5},
             {"progressLabel", "12.4 MB of 20.1 MB"}};
}

Bytes shellUpdate() {
  List recent;
  for (int number = 0; number < 4; ++number) recent.push_back(transfer(number));
  return StandardMethodCodec::encodeMethodCall(
             {"updateDesktopShell",
              Map{{"visible", true}, {"activeTransfer", transfer(9)}, {"recentTransfers", recent}}})
      .joined();
}

Value entryList(std::int64_t count) {
  List list;
  for (std::int64_t index = 0; index < count; ++index) {
    const std::string name = "IMG_" + std::to_string(100000 + index) + ".jpeg";
    list.push_back(Map{{"path", "/home/ada/Pictures/Holidays/2026/" + name},
                       {"name", name},
                       {"size", std::int64_t{2'500'000} + index},
                       {"relativePath", "2026/" + name},
                       {"kind", "file"}});
  }
  return list;
}

void BM_DecodeShellUpdate(benchmark::State& state) {
  const Bytes message = shellUpdate();
  for (auto _ : state) benchmark::DoNotOptimize(StandardMethodCodec::decodeMethodCall(message));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(message.size()));
  state.counters["bytes"] = static_cast<double>(message.size());
}
BENCHMARK(BM_DecodeShellUpdate);

void BM_DecodeEntryList(benchmark::State& state) {
  const Bytes message = StandardMethodCodec::encodeMessage(entryList(state.range(0))).joined();
  for (auto _ : state) benchmark::DoNotOptimize(StandardMethodCodec::decodeMessage(message));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(message.size()));
}
BENCHMARK(BM_DecodeEntryList)->Arg(100'000)->Unit(benchmark::kMillisecond);

void BM_EncodeEntryList(benchmark::State& state) {
  const Value list = entryList(state.range(0));
  std::size_t size = 0;
  for (auto _ : state) size = StandardMethodCodec::encodeMessage(list).size();
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
}
BENCHMARK(BM_EncodeEntryList)->Arg(100'000)->Unit(benchmark::kMillisecond);

// A call with a payload, decoded, and its reply encoded: the part of a bulk call that is the
// codec's.
void BM_PayloadThereAndBack(benchmark::State& state) {
  const Bytes message =
      StandardMethodCodec::encodeMethodCall(
          {"cryptoEncrypt", Map{{"data", Bytes(std::vector<std::uint8_t>(
                                             static_cast<std::size_t>(state.range(0)), 7))}}})
          .joined();
  for (auto _ : state) {
    const MethodCall call = StandardMethodCodec::decodeMethodCall(message);
    const Value& data = *call.arguments.getIf<Map>()->find("data");
    benchmark::DoNotOptimize(StandardMethodCodec::encodeReply(Reply(data)));
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_PayloadThereAndBack)->Arg(1 << 20)->Arg(64 << 20);

}  // namespace
}  // namespace brevanholt::platform
