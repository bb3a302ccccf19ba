#include <memory>

#include "tests/fitting/fit_test_support.h"

namespace {

const std::vector<cv::Point> kCircle = {{15, 20}, {10, 25}, {5, 20}, {10, 15}, {13, 24}, {6, 17}};
const std::vector<cv::Point> kLine = {{0, 5}, {10, 15}, {20, 25}, {30, 35}, {40, 45}};

TEST(CircleFitFactory, PassesItsArgumentsInTheOrderOfTheFitter) {
    orxFit::TCircleFitFactory factory;
    EXPECT_EQ(factory.fitter, nullptr);
    ASSERT_TRUE(factory.createFitType_ransacCircle(kCircle, 6.9, 4.9, 0.5, 50, 20));
    const std::unique_ptr<TCircleFit> ransac(factory.fitter);
    TCircleFit_Ransac expected;
    expected.setPoints(kCircle);
    expected.setParams({6, 4, 0.5, 50, 20});
    EXPECT_NE(dynamic_cast<TCircleFit_Ransac*>(ransac.get()), nullptr);
    EXPECT_TRUE(sameBits(ransac->fit(), expected.fit()));
    EXPECT_TRUE(ransac->fit().valid);

    ASSERT_TRUE(factory.createFitType_robustCircle(kCircle, 2.5, 0.5, 4));
    const std::unique_ptr<TCircleFit> robust(factory.fitter);
    EXPECT_NE(dynamic_cast<TCircleFit_Robust*>(robust.get()), nullptr);
    EXPECT_NEAR(robust->fit().r, 5, 1e-6);

    // Making another fitter has left the first one alive.
    EXPECT_TRUE(factory.createFitType_weightedLeastSquares(kCircle, 4, 1.5));
    EXPECT_NE(dynamic_cast<TCircleFit_WeightedLeastSquares*>(factory.fitter), nullptr);
    EXPECT_NEAR(factory.fitter->fit().r, 5, 1e-6);
    EXPECT_TRUE(ransac->fit().valid);
}

TEST(LineFitFactory, SearchesAThousandTrialsWithACapOfAHundred) {
    fit_scenes::Random random(21);
    const auto points = fit_scenes::linePoints(0.5, 40, 200, {1.0, 0.5, {640, 480}}, random);
    TLineFit_Ransac expected;
    expected.setPoints(points);
    expected.setParams({26.6, 2, 2, 10});
    expected.setSearchLimits(1000, 100);
    orxFit::TLineFitFactory factory;
    ASSERT_TRUE(factory.createFitType_ransacLine(points, 26.6, 2, 2.9, 10));
    EXPECT_TRUE(sameBits(factory.fitter->fit(), expected.fit()));
    EXPECT_NEAR(factory.fitter->fit().k, 0.5, 0.01);
    // Few lines have the wanted angle, so the cap is not reached and all trials count.
    factory.fitter->setParams({26.6, 2, 2, 0.5});
    expected.setParams({26.6, 2, 2, 0.5});
    EXPECT_TRUE(sameBits(factory.fitter->fit(), expected.fit()));
    delete factory.fitter;

    ASSERT_TRUE(factory.createFitType_robustLine(kLine, 4, 0));
    EXPECT_NEAR(factory.fitter->fit().k, 1, 1e-6);
    EXPECT_NEAR(factory.fitter->fit().b, 5, 1e-4);
}

// Counts its own destruction.
class CountedFit : public TCircleFit {
  public:
    explicit CountedFit(int* destroyed) : destroyed_(destroyed) {}
    ~CountedFit() override { ++*destroyed_; }
    orx::TCircle fit() override { return {}; }
    bool setParams(std::vector<double>) override { return true; }

  private:
    int* destroyed_;
};

TEST(FitFactories, ACopySharesTheFitterAndTheDestructorDeletesIt) {
    int destroyed = 0;
    {
        orxFit::TCircleFitFactory copy;
        {
            orxFit::TCircleFitFactory original;
            original.fitter = new CountedFit(&destroyed);
            copy = original;
            EXPECT_EQ(copy.fitter, original.fitter);
            original.fitter = nullptr;  // one of the two has to let go
        }
        EXPECT_EQ(destroyed, 0);
    }
    EXPECT_EQ(destroyed, 1);
}

}  // namespace
