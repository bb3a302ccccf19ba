"""Fits the scenes that accuracy_peers wrote with scikit-image; prints its estimates for accuracy_peers to judge.

Usage: accuracy_skimage.py points.txt > estimates.txt (Debian package python3-skimage)
"""
import sys
import warnings

import numpy
from skimage.measure import CircleModel, EllipseModel, LineModelND, ransac

TOLERANCE = 3.5 * 0.3  # the noise of accuracy_peers


def circle(model):
    return list(model.params)


def line(model):
    origin, direction = model.params
    return [origin[0], origin[1], direction[0], direction[1]]


def ellipse(model):
    return list(model.params)


KINDS = {
    "circle": ("CircleModel", CircleModel, circle, 3),
    "line": ("LineModelND", LineModelND, line, 2),
    "ellipse": ("EllipseModel", EllipseModel, ellipse, 5),
}


def plain(points, model_class):
    model = model_class()
    return model if model.estimate(points) else None


def consensus(points, model_class, samples, seed):
    if model_class is EllipseModel:  # its residuals take seconds a scene
        return None
    model, inliers = ransac(points, model_class, min_samples=samples, residual_threshold=TOLERANCE,
                            max_trials=20000, stop_probability=0.999, random_state=seed)
    return None if inliers is None else model


def main(path):
    warnings.simplefilter("ignore")
    numpy.seterr(all="ignore")
    with open(path) as file:
        for text in file:
            kind, row, scene, *values = text.split()
            name, model_class, values_of, samples = KINDS[kind]
            points = numpy.array(values, dtype=float).reshape(-1, 2)
            seed = int(row) * 1000003 + int(scene)
            for title, model in (("scikit-image, " + name, plain(points, model_class)),
                                 ("scikit-image, ransac, " + name, consensus(points, model_class, samples, seed))):
                if model is not None and model.params is not None:
                    print(title + ";", row, scene, *("%.17g" % v for v in values_of(model)))


if __name__ == "__main__":
    main(sys.argv[1])
