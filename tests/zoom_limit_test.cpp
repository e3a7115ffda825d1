// Zoom-in limit: levels to limits, the crop re-applied at once, and the limit kept while tracking.
#include <gtest/gtest.h>

#include "FDSession.h"
#include "ZorvCameraProvider.h"
#include "support/LogCapture.h"
#include "support/ProviderPeer.h"
#include "support/RecordingListener.h"

using namespace testing_support;
using ::android::sp;
using ::vendor::zorv::zorvprovider::fdstream::V1_0::implementation::FDSession;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::CameraMoveDirection;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::Crop;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::TrackingMode;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProvider;
using ::vendor::zorv::zorvprovider::zorvprovider::V2_4::implementation::ZorvCameraProviderTestPeer;

namespace {

class ZoomLimitTest : public ::testing::Test {
  protected:
    void startFrom(Crop crop) {
        FDSession::getInstance()->setPTZControl({{crop}, 1280, 720, 0, 0, 0});
    }
    SceneControl ptz() {
        std::lock_guard lock(FDSession::mLock);
        return FDSession::getInstance()->mPTZControl;
    }
    uint32_t limit() { return ZorvCameraProviderTestPeer::zoomInLimit(*provider); }

    sp<ZorvCameraProvider> provider = new ZorvCameraProvider();
};

}  // namespace

TEST_F(ZoomLimitTest, LevelsSelectTheirLimitAndAnyOtherLevelSelects320) {
    const std::pair<uint32_t, uint32_t> rows[] = {{1, 1280}, {2, 640},         {3, 416}, {4, 320},
                                                  {5, 256},  {0, 320},         {6, 320}, {9, 320},
                                                  {1, 1280}, {0xFFFFFFFF, 320}};
    for (const auto& row : rows) {
        SCOPED_TRACE("level " + std::to_string(row.first));
        EXPECT_TRUE(provider->setZoomInLimit("cam0", row.first).isOk());
        EXPECT_EQ(limit(), row.second);
    }
}

TEST_F(ZoomLimitTest, NarrowCropIsWidenedToTheNewLimitAtOnce) {
    // Given a 320-wide crop and a listener
    startFrom({480, 270, 800, 450});
    sp<RecordingListener> listener = new RecordingListener();
    provider->setListener(listener);
    LogCapture::clear();

    // When the limit becomes 640 (level 2)
    EXPECT_TRUE(provider->setZoomInLimit("device@3.2/internal/0", 2).isOk());

    // Then the crop is widened about its centre, stored and announced, after the logged move
    const SceneControl widened{{Crop{320, 180, 960, 540}}, 1280, 720, 0, 0, 0};
    EXPECT_EQ(ptz(), widened);
    EXPECT_EQ(listener->crops(), (std::vector<SceneControl>{widened}));
    EXPECT_EQ(LogCapture::linesWithTag(kProviderTag),
              (std::vector<LogLine>{
                      providerLine(kDebug,
                                   "ZorvCameraProvider camera device@3.2/internal/0 setZoomInLimit "
                                   "2 \n"),
                      providerLine(kDebug,
                                   "ZorvCameraProvider moveCamera device@3.2/internal/0 7 by 0 \n"),
                      providerLine(kDebug,
                                   "ZorvCameraProvider Move Camera, step 0 to 320, 960, 180, 540 "
                                   "..  \n"),
              }));

    // When the limit drops to 256 (level 5), a crop wider than it keeps its width
    EXPECT_TRUE(provider->setZoomInLimit("cam0", 5).isOk());
    EXPECT_EQ(ptz(), widened);
}

TEST_F(ZoomLimitTest, WhileTrackingTheLimitIsStoredAndAppliesFromTheNextZoom) {
    // Given tracking on and a small crop
    startFrom({480, 270, 800, 450});
    provider->setTrackingMode("cam0", TrackingMode::MODE_1);
    LogCapture::clear();

    // When the limit becomes 1280 (level 1)
    EXPECT_TRUE(provider->setZoomInLimit("cam0", 1).isOk());

    // Then the limit is stored but the move is refused
    EXPECT_EQ(limit(), 1280u);
    EXPECT_EQ(LogCapture::linesWithTag(kProviderTag),
              (std::vector<LogLine>{
                      providerLine(kDebug, "ZorvCameraProvider camera cam0 setZoomInLimit 1 \n"),
                      providerLine(kDebug, "ZorvCameraProvider moveCamera cam0 7 by 0 \n"),
                      providerLine(kDebug, "Tracking enabled for camera, ignoring move"),
              }));

    // When tracking stops (resetting the crop to the full frame) and the client zooms in
    provider->setTrackingMode("cam0", TrackingMode::OFF);
    startFrom({480, 270, 800, 450});
    EXPECT_TRUE(provider->moveCamera("cam0", CameraMoveDirection::ZOOM_IN, 10));

    // Then the zoom applies the stored limit
    EXPECT_EQ(ptz(), (SceneControl{{Crop{0, 0, 1280, 720}}, 1280, 720, 0, 0, 0}));
}
