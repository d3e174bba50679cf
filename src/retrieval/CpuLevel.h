#pragma once

namespace ombrel {

// Which instructions the inner loops of the indexes may use. Each level includes those before it.
enum class CpuLevel { baseline, avx2, avx512 };

// The highest level that this processor has.
inline CpuLevel detectedCpuLevel() {
#if defined(__x86_64__)
    static const CpuLevel level = [] {
        __builtin_cpu_init();
        if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
            __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512vnni")) {
            return CpuLevel::avx512;
        }
        return __builtin_cpu_supports("avx2") ? CpuLevel::avx2 : CpuLevel::baseline;
    }();
    return level;
#else
    return CpuLevel::baseline;
#endif
}

} // namespace ombrel
