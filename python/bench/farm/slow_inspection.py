"""The inspection of kills.py: six milliseconds of nothing but waiting, and what may happen to an inspection."""
import os
import time


def inspect(image):
    time.sleep(0.006)
    trouble = int(image[0, 0])
    if trouble == 251:
        os.abort()
    if trouble == 252:
        raise ValueError("poison")
    return {"mean": float(image.mean())}
