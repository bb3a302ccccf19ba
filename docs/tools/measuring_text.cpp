// What docs/accuracy-measuring.md says before and after its tables.
#include "docs/tools/measuring_tables.h"

namespace measuring_tables {

void printIntroduction() {
    std::printf(
        "# Accuracy of the fits for measuring\n\n"
        "Made by `accuracy_measuring` (docs/tools), table by table; do not edit. Scenes are random points at "
        "equal\n"
        "steps along a shape that is known, with Gaussian noise in x and in y (its standard deviation, in "
        "pixels).\n"
        "\n"
        "- **spread / bound**: the standard deviation of the results over the least that any unbiased "
        "estimate can\n"
        "  have (the bound of Cramer and Rao, from the true shape); of the parameter that comes off worst.\n"
        "- **bias / spread**: the mean error over the standard deviation, again of the worst parameter. Both "
        "are\n"
        "  told against the efficient estimate of the same scenes (see docs/tools/measuring_accuracy.h), so "
        "that\n"
        "  there is hardly any chance in them.\n"
        "- **within**: how many of the true values lie within the stated intervals of 68.3 and 95.4 %%\n"
        "  (`coverageFactor` times the stated deviation), in percent, least and largest of the parameters. "
        "Chance\n"
        "  alone moves them by 0.5 and 0.2 (standard errors at 10,000 scenes; at 1,000 scenes 1.5 and 0.7).\n"
        "- **lost, astray**: scenes without a result, and scenes whose result is off by more than ten "
        "bounds: another\n"
        "  shape was found. Neither counts in the other columns.\n"
        "- **reached**: what the row holds of the goals, the worst of its columns.\n"
        "\n"
        "| goal | good | excellent |\n|---|---|---|\n"
        "| spread over the bound, no outliers | 1.05 | 1.01 |\n"
        "| the same with 40 %% strewn outliers, of the inliers' bound | 1.15 | 1.05 |\n"
        "| bias over spread | 0.05 | 0.02 |\n"
        "| intervals of 68.3 and 95.4 %% hold | 65 to 72, 93.5 to 96.5 | 67 to 69.5, 94.7 to 96 |\n"
        "| lost and astray, each | 0.1 %% | 0.1 %% |\n"
        "\n"
        "A share is judged after allowing two standard errors of its count.\n");
}

void printNotes() {
    // The bound of the radius there, for the text.
    const double bound = circleTask(30, 20, 1).boundDeviation()[2];
    std::printf(
        "\n## Where rows miss, and why\n\n"
        "- An arc of 30° in 20 points with a noise of 1 pixel: the arc rises 3.4 pixels above its chord, and "
        "the\n"
        "  bound itself leaves the radius of 100 uncertain by %.0f pixels. Its curvature errs like a "
        "Gaussian, its\n"
        "  radius then cannot: it errs further upwards than downwards, and symmetric intervals miss it. "
        "Where the\n"
        "  deviation exceeds half of the radius the fit is refused (`fsArcTooShort`); those are the lost "
        "scenes.\n"
        "- The same arc with more points and a noise of 1 (%.0f pixels of uncertainty at 200 points): "
        "distances are\n"
        "  not quite linear in the center over errors so large, which costs about a percent at any number "
        "of\n"
        "  points. An estimate that corrects the equations it solves, not their solution, might win it "
        "back.\n"
        "- Twelve inliers among eight outliers (40 %% of 20 points): where the noise is a hundredth of the "
        "scene or\n"
        "  more, outliers come as close to a short arc or a line as its own points, and change what is found "
        "by\n"
        "  more than the noise does. The few points left do not tell.\n"
        "- Lost scenes of arcs of 30° with a noise of 1 among outliers: found collinear (`fsCollinear`), or "
        "by the\n"
        "  search, whose circles must tell their radius to a fifth (`fsNoConsensus`).\n"
        "- Ellipses: twelve inliers among eight outliers tell no ellipse, which any five points have; half "
        "of the\n"
        "  scenes are refused and most others astray, with deviations that say so. Narrow ones (1:5) with a "
        "noise of\n"
        "  1 carry a twentieth of their minor half axis; distances are not linear over so much at the tips.\n"
        "- Edges without noise: what is left is rounding to grey levels and the finder's own bias, some\n"
        "  ten-thousandths of a pixel in the radius of blurred disks. It is the same in every picture, so "
        "that the\n"
        "  intervals of the radius, which tell of what varies, hold less often than they say.\n"
        "- Full circle, 2,000 points, noise 0.01, Tukey: the scale of a few scenes in 10,000 settles on a "
        "wide band of\n"
        "  outliers (the stated noise tells), and the result is ten bounds off: some thousandths of a "
        "pixel.\n"
        "- Tukey's loss at 95 %% efficiency spreads at least 1.026 times the bound.\n",
        bound, circleTask(30, 200, 1).boundDeviation()[2]);
}

}  // namespace measuring_tables
