// PCL's consensus searches on the scenes of ransac_bench. With the same number of trials: the probability
// asked for is so high that the search never ends early. And, named _confident, with as many as the
// confidence of find_line and find_circle needs, followed by PCL's refinement of the model.
#include <benchmark/benchmark.h>
#include <pcl/sample_consensus/ransac.h>
#include <pcl/sample_consensus/sac_model_circle.h>
#include <pcl/sample_consensus/sac_model_line.h>

#include "bench/ransac_scene.h"

namespace {

using Cloud = pcl::PointCloud<pcl::PointXYZ>;

Cloud::Ptr cloudOf(const std::vector<cv::Point>& points) {
    Cloud::Ptr cloud(new Cloud);
    for (const cv::Point& p : points) {
        cloud->push_back({static_cast<float>(p.x), static_cast<float>(p.y), 0.0F});
    }
    return cloud;
}

template <class Model>
void search(benchmark::State& state, const typename Model::Ptr& model) {
    for (auto _ : state) {
        pcl::RandomSampleConsensus<pcl::PointXYZ> consensus(model, scene::kThreshold);
        consensus.setMaxIterations(scene::kTrials);
        consensus.setProbability(1.0);
        benchmark::DoNotOptimize(consensus.computeModel());
    }
}

template <class Model>
void confidentSearch(benchmark::State& state, const typename Model::Ptr& model) {
    for (auto _ : state) {
        pcl::RandomSampleConsensus<pcl::PointXYZ> consensus(model, scene::kThreshold);
        consensus.setMaxIterations(scene::kTrials);
        consensus.setProbability(0.999);
        benchmark::DoNotOptimize(consensus.computeModel());
        pcl::Indices inliers;
        Eigen::VectorXf found;
        Eigen::VectorXf refined;
        consensus.getInliers(inliers);
        consensus.getModelCoefficients(found);
        model->optimizeModelCoefficients(inliers, found, refined);
        benchmark::DoNotOptimize(refined.data());
    }
}

void line(benchmark::State& state) {
    using Model = pcl::SampleConsensusModelLine<pcl::PointXYZ>;
    search<Model>(state, Model::Ptr(new Model(cloudOf(scene::line(state.range(0))))));
}
BENCHMARK(line)->Name("pcl_line")->Arg(200)->Arg(2000)->Arg(20000)->Unit(benchmark::kMicrosecond);

void circle(benchmark::State& state) {
    using Model = pcl::SampleConsensusModelCircle2D<pcl::PointXYZ>;
    const Model::Ptr model(new Model(cloudOf(scene::circle(state.range(0)))));
    model->setRadiusLimits(5, 1000);
    search<Model>(state, model);
}
BENCHMARK(circle)->Name("pcl_circle")->Arg(200)->Arg(2000)->Arg(20000)->Unit(benchmark::kMicrosecond);

void confidentLine(benchmark::State& state) {
    using Model = pcl::SampleConsensusModelLine<pcl::PointXYZ>;
    confidentSearch<Model>(state, Model::Ptr(new Model(cloudOf(scene::line(state.range(0))))));
}
BENCHMARK(confidentLine)
    ->Name("pcl_line_confident")
    ->Arg(200)
    ->Arg(2000)
    ->Arg(20000)
    ->Unit(benchmark::kMicrosecond);

void confidentCircle(benchmark::State& state) {
    using Model = pcl::SampleConsensusModelCircle2D<pcl::PointXYZ>;
    const Model::Ptr model(new Model(cloudOf(scene::circle(state.range(0)))));
    model->setRadiusLimits(5, 1000);
    confidentSearch<Model>(state, model);
}
BENCHMARK(confidentCircle)
    ->Name("pcl_circle_confident")
    ->Arg(200)
    ->Arg(2000)
    ->Arg(20000)
    ->Unit(benchmark::kMicrosecond);

}  // namespace
