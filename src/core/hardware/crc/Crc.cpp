#include "core/hardware/crc/Crc.h"

#include <array>
#include <concepts>
#include <cstddef>
#include <type_traits>
#include <utility>

#include "core/hardware/crc/SliceCrc.h"

namespace RV::Crc {

namespace {

using CrcRoutine = uint64_t (*)(std::span<const uint8_t>);

template <unsigned kWidth>
using RegisterOf =
    std::conditional_t<kWidth <= 8, uint8_t,
                       std::conditional_t<kWidth <= 16, uint16_t,
                                          std::conditional_t<kWidth <= 32, uint32_t, uint64_t>>>;

template <std::unsigned_integral Register>
constexpr CrcParameters<Register> parametersOf(const CrcAlgorithm& algorithm) {
    return {algorithm.width,
            static_cast<Register>(algorithm.polynomial),
            static_cast<Register>(algorithm.initial),
            algorithm.reflectInput,
            algorithm.reflectOutput,
            static_cast<Register>(algorithm.finalXor)};
}

template <size_t kIndex>
uint64_t runAlgorithm(std::span<const uint8_t> data) {
    constexpr CrcAlgorithm kAlgorithm = kCrcCatalogue[kIndex];
    using Register = RegisterOf<kAlgorithm.width>;
    constexpr auto kParameters = parametersOf<Register>(kAlgorithm);
    constexpr auto& kTable =
        kSliceTable<Register, kAlgorithm.width, kParameters.polynomial, kParameters.reflectInput>;
    constexpr auto kStart = startState<kAlgorithm.reflectInput>(kParameters);
    return finish<kAlgorithm.reflectInput>(kParameters, advance(kTable, kStart, data));
}

template <size_t... kIndex>
constexpr auto makeRoutines(std::index_sequence<kIndex...>) {
    return std::array<CrcRoutine, sizeof...(kIndex)>{&runAlgorithm<kIndex>...};
}

// One routine per entry of the catalogue, in its order.
constexpr auto kRoutines = makeRoutines(std::make_index_sequence<kCrcCatalogue.size()>{});

constexpr bool isCodeOrder() {
    for (size_t i = 0; i < kCrcCatalogue.size(); ++i) {
        if (kCrcCatalogue[i].code != i + 1) return false;
    }
    return true;
}
static_assert(isCodeOrder(), "codes index the catalogue");

}  // namespace

const CrcAlgorithm* findAlgorithm(uint8_t code) noexcept {
    if (code < 1 || code > kCrcCatalogue.size()) return nullptr;
    return &kCrcCatalogue[code - 1U];
}

std::optional<uint8_t> codeFromConfig(int config) noexcept {
    if (config == 0) return kNoCrc;
    if (config < 0) return std::nullopt;
    for (const CrcAlgorithm& algorithm : kCrcCatalogue) {
        if (algorithm.config == config) return algorithm.code;
    }
    return std::nullopt;
}

std::optional<uint64_t> computeCrc(uint8_t code, std::span<const uint8_t> data) noexcept {
    if (code < 1 || code > kRoutines.size() || code == kCrc8Variant) return std::nullopt;
    return kRoutines[code - 1U](data);
}

}  // namespace RV::Crc
