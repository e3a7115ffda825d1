// The provider's interface methods and the cache's pipeline operations as one table of calls
// with chosen arguments, shared by the stress test and the provider fuzzer.
#ifndef TESTS_SUPPORT_PROVIDEROPS_H
#define TESTS_SUPPORT_PROVIDEROPS_H

#include <random>

#include "ZorvCameraProvider.h"

namespace testing_support {

using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::IZorvCameraProviderCallback;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProvider;

// Where the calls take their arguments from: a seeded generator or a fuzzer's input.
class Choices {
  public:
    virtual ~Choices() = default;
    // A value meant to lie in low..high; a fuzzer may go outside.
    virtual int32_t pick(int32_t low, int32_t high) = 0;
    // Exactly one of 0..n-1.
    virtual size_t index(size_t n) = 0;
    virtual std::string cameraId() = 0;
    virtual std::string text(size_t maxLength) = 0;
};

// Choices from a seeded generator, among four camera ids.
class RandomChoices : public Choices {
  public:
    explicit RandomChoices(uint32_t seed) : mRandom(seed) {}
    int32_t pick(int32_t low, int32_t high) override {
        return std::uniform_int_distribution<int32_t>(low, high)(mRandom);
    }
    size_t index(size_t n) override { return static_cast<size_t>(pick(0, int32_t(n) - 1)); }
    std::string cameraId() override {
        return (index(2) ? "device@3.2/internal/" : "") + std::to_string(index(2));
    }
    std::string text(size_t) override { return "{\"n\":" + std::to_string(pick(0, 99)) + "}"; }

  private:
    std::mt19937 mRandom;
};

struct OpContext {
    ZorvCameraProvider& provider;
    Choices& in;
    // Told what went wrong: a result that no interleaving of calls allows.
    std::function<void(const std::string&)> problem;
    // The caller's own listener, registered and removed again by one operation.
    ::android::sp<IZorvCameraProviderCallback> listener;
    bool registered = false;
    // True when nothing else calls the provider meanwhile: what a setter stored is read back.
    bool alone = false;
};

struct ProviderOp {
    const char* name;
    void (*run)(OpContext& c);
};

// Every interface method of the provider and every pipeline operation of the cache.
const std::vector<ProviderOp>& providerOps();

}  // namespace testing_support

#endif  // TESTS_SUPPORT_PROVIDEROPS_H
