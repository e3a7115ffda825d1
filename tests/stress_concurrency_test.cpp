// Many threads at once over every interface method of two providers and the cache's pipeline
// operations, with listeners that call back with any method (on their own thread and on threads
// they start), die or come and go, and framing engines attached and detached meanwhile; then
// the state the calls leave behind must agree.
#include <stdio.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <thread>

#include "support/ProviderOps.h"
#include "support/ProviderTest.h"
#include "support/Watchdog.h"

using namespace testing_support;

namespace {

constexpr int kThreads = 8;
constexpr int kOpsPerThread = 2000;
constexpr int kSettleOpsPerThread = 60;
constexpr std::chrono::seconds kBound{60};
// Notifications each dying listener takes before its process dies.
constexpr int kFirstDeathAfter = 40;
constexpr int kSecondDeathAfter = 200;

// What threads add to under one lock: what went wrong, threads listeners started.
struct Collected {
    std::mutex lock;  // guards the lists
    Strings problems;
    std::vector<std::thread> started;
    void problem(const std::string& what) {
        std::lock_guard<std::mutex> hold(lock);
        problems.push_back(what);
    }
};

// Calls made from inside a listener do not call back again on the same thread.
thread_local bool tInsideListener = false;

// A listener of `provider` that, while `active`, calls back into it from its callbacks with an
// operation of the table: on the calling thread, or now and then on a thread it starts.
sp<RecordingListener> reentrantListener(ZorvCameraProvider& provider,
                                        const std::atomic<bool>& active, Collected& out) {
    sp<RecordingListener> listener = new RecordingListener("reentrant");
    listener->onEvent([&provider, &active, &out](const std::string&) {
        if (!active || tInsideListener) return;
        thread_local RandomChoices in(std::hash<std::thread::id>()(std::this_thread::get_id()));
        const auto& ops = providerOps();
        const ProviderOp& op = ops[in.index(ops.size())];
        auto run = [&provider, &out, &op](Choices& choices) {
            tInsideListener = true;
            OpContext c{provider, choices, [&](const std::string& w) { out.problem(w); }, nullptr};
            op.run(c);
            tInsideListener = false;
        };
        if (in.index(8) == 0) {
            std::lock_guard<std::mutex> hold(out.lock);
            out.started.emplace_back([run, seed = in.pick(0, 1 << 20)] {
                RandomChoices own(seed);
                run(own);
            });
        } else {
            run(in);
        }
    });
    return listener;
}

// A listener whose process dies after `events` notifications.
sp<RecordingListener> dyingListener(const std::string& name, int events) {
    sp<RecordingListener> listener = new RecordingListener(name);
    auto heard = std::make_shared<std::atomic<int>>(0);
    RecordingListener* raw = listener.get();
    listener->onEvent([raw, heard, events](const std::string&) {
        if (++*heard == events) raw->failWith(::android::DEAD_OBJECT);
    });
    return listener;
}

// An engine that only counts, attached and detached over and over by one thread.
class CountingEngine : public FramingEngine {
  public:
    void onSceneControl(const SceneControl&) override { ++calls; }
    void onPTZControl(const SceneControl&) override { ++calls; }
    void onTrackControl(const TrackControl&) override { ++calls; }
    void onTrackingModeChanged(int32_t) override { ++calls; }
    std::atomic<int> calls{0};
};

// Runs `body(index, choices)` on `threads` threads at once and waits for them.
void together(int threads, const std::function<void(int, RandomChoices&)>& body) {
    std::vector<std::thread> running;
    for (int t = 0; t < threads; ++t) {
        running.emplace_back([t, &body] {
            RandomChoices in(1000 + t);
            body(t, in);
        });
    }
    for (std::thread& t : running) t.join();
}

// True when every element of `part` occurs in `whole`, in the same order.
bool inOrder(const std::vector<SceneControl>& part, const std::vector<SceneControl>& whole) {
    auto at = whole.begin();
    for (const SceneControl& s : part) {
        at = std::find(at, whole.end(), s);
        if (at == whole.end()) return false;
        ++at;
    }
    return true;
}

}  // namespace

TEST(StressConcurrencyTest, EveryMethodOfTwoProvidersWithListenersThatCallBackEnginesThatGo) {
    // Given two providers, the multistream flag on (so that the availability switch nests the
    // session lock inside the provider lock); on the first two plain listeners, two that die
    // mid-run and one that calls back; on the second one that calls back
    setProp("persist.vendor.multistream.enable", "1");
    sp<ZorvCameraProvider> providers[] = {new ZorvCameraProvider(), new ZorvCameraProvider()};
    ZorvCameraProvider& p = *providers[0];
    std::atomic<bool> reentry{true};
    Collected out;
    sp<RecordingListener> first = new RecordingListener("first");
    sp<RecordingListener> second = new RecordingListener("second");
    sp<RecordingListener> dying = dyingListener("dying", kFirstDeathAfter);
    sp<RecordingListener> dyingLater = dyingListener("dyingLater", kSecondDeathAfter);
    for (const auto& l : {first, second, dying, dyingLater}) p.setListener(l);
    for (const auto& provider : providers) {
        provider->setListener(reentrantListener(*provider, reentry, out));
    }
    const auto& ops = providerOps();
    std::vector<std::atomic<int>> counts(ops.size());
    Watchdog watchdog(kBound, "stress clients");

    // When clients run random mixes over both providers while engines come and go
    std::atomic<bool> churning{true};
    std::thread churn([&churning] {
        while (churning) {
            auto engine = std::make_unique<CountingEngine>();
            FDSession::getInstance()->attachEngine(engine.get());
            std::this_thread::sleep_for(std::chrono::microseconds(200));
            FDSession::getInstance()->attachEngine(nullptr);
        }
    });
    together(kThreads, [&](int t, RandomChoices& in) {
        // One context per provider, each with the client's own listener for it.
        std::vector<OpContext> contexts;
        for (const auto& provider : providers) {
            contexts.push_back({*provider, in, [&](const std::string& w) { out.problem(w); },
                                new RecordingListener("client" + std::to_string(t))});
        }
        for (int i = 0; i < kOpsPerThread; ++i) {
            const size_t op = in.index(ops.size());
            ++counts[op];
            ops[op].run(contexts[in.index(2)]);
        }
        for (OpContext& c : contexts) {
            if (c.registered) c.provider.clearListener(c.listener);
        }
    });
    churning = false;
    churn.join();
    reentry = false;
    for (std::thread& t : out.started) t.join();

    // Then every operation ran, nothing impossible was seen, and the two plain listeners heard
    // the same notifications in the same order, crops only when they changed
    for (size_t op = 0; op < ops.size(); ++op) EXPECT_GT(counts[op].load(), 0) << ops[op].name;
    EXPECT_EQ(out.problems, Strings{});
    EXPECT_EQ(first->events(), second->events());
    const std::vector<SceneControl> crops = first->crops();
    for (size_t i = 1; i < crops.size(); ++i) EXPECT_FALSE(crops[i - 1] == crops[i]) << i;

    // And each dying listener was called up to its death, logged once and dropped
    EXPECT_EQ(dying->events().size(), static_cast<size_t>(kFirstDeathAfter));
    EXPECT_EQ(dyingLater->events().size(), static_cast<size_t>(kSecondDeathAfter));
    EXPECT_EQ(Peer::listenerCount(p), 3u);
    const Lines errors = providerLines(kError);
    EXPECT_EQ(errors.size(), 2u);
    for (const LogLine& l : errors) EXPECT_NE(l.text.find("callback: " + kDead), l.text.npos) << l;

    // When, on the first provider, tracking modes are set at once while a listener sets
    // another mode from what it is told
    sp<RecordingListener> changer = new RecordingListener("changer");
    changer->onEvent([&p](const std::string& e) {
        if (e == "cameraDeviceTrackingChange 0 1") p.setTrackingMode("0", TrackingMode::MODE_4);
    });
    p.setListener(changer);
    p.setTrackingMode("0", p.getTrackingMode("0") == TrackingMode::MODE_1 ? TrackingMode::OFF
                                                                          : TrackingMode::MODE_1);
    together(4, [&](int, RandomChoices& in) {
        for (int i = 0; i < kSettleOpsPerThread; ++i) {
            p.setTrackingMode("0", static_cast<TrackingMode>(in.pick(0, 5)));
        }
    });

    // Then the session's mode, the property and every listener's last notification agree
    expectAgreement({first, second, changer}, false);

    // When, with tracking off, moves, presets and zoom limits run at once while a listener
    // pans from the crops it is told
    p.clearListener(changer);
    changer->onEvent([&p](const std::string& e) {
        if (e.rfind("onCameraCropApplied crops=[{1", 0) == 0 && !tInsideListener) {
            tInsideListener = true;
            p.moveCamera("0", CameraMoveDirection::PAN_LEFT, 7);
            tInsideListener = false;
        }
    });
    p.setTrackingMode("0", TrackingMode::OFF);
    p.setListener(changer);
    RecordingEngine engine;  // records the crops in the order they are stored
    first->clear();
    p.moveCamera("0", CameraMoveDirection::ZOOM_IN, 10);
    together(4, [&](int, RandomChoices& in) {
        for (int i = 0; i < kSettleOpsPerThread; ++i) {
            switch (in.index(3)) {
                case 0:
                    p.moveCamera("0", static_cast<CameraMoveDirection>(in.pick(1, 7)),
                                 in.pick(1, 40));
                    break;
                case 1:
                    p.gotoPreset("0", in.pick(0, 3));
                    break;
                default:
                    p.setZoomInLimit("0", in.pick(1, 5));
                    break;
            }
        }
    });

    // Then the crop in force is the last announced, and each listener heard the crops in the
    // order they were stored
    std::vector<SceneControl> stored;
    for (const RecordingEngine::Call& call : engine.calls()) {
        if (call.operation == "onPTZControl") stored.push_back(call.scene);
    }
    const SceneControl inForce = ptz();
    ASSERT_FALSE(first->crops().empty());
    EXPECT_EQ(first->crops().back(), inForce);
    EXPECT_EQ(second->crops().back(), inForce);
    EXPECT_EQ(Peer::lastCrop(p), inForce);
    EXPECT_TRUE(inOrder(first->crops(), stored));
    printf("stress: %d threads x %d operations; %zu notifications per plain listener, %zu crops "
           "stored at the end\n",
           kThreads, kOpsPerThread, second->events().size(), stored.size());
}
