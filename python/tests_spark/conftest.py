"""A cluster of processes for all tests, of the kind that QUARVIS_SPARK names."""

import os
import sys
import warnings

import pytest
from clusters import CLUSTERS

KIND = os.environ.get("QUARVIS_SPARK", "local-cluster")


def pytest_configure(config):
    # Small tables cause warnings.
    config.addinivalue_line("filterwarnings", "ignore::quarvis.QuarvisWarning")
    # PySpark leaves sockets to the garbage collector.
    config.addinivalue_line("filterwarnings", "ignore::ResourceWarning")
    config.addinivalue_line("filterwarnings", "ignore::pytest.PytestUnraisableExceptionWarning")
    # PySpark requires an older pandas, but the tests do not use it.
    config.addinivalue_line("filterwarnings", "ignore:PySpark does not yet fully:FutureWarning")
    config.addinivalue_line("markers", "on(*kinds): runs on these kinds of clusters alone")
    config.addinivalue_line("markers", "slow: takes longer than the answer to most changes may")


def pytest_collection_modifyitems(items, config):
    kept, others = [], []
    for item in items:
        kinds = {kind for mark in item.iter_markers("on") for kind in mark.args}
        (others if kinds and KIND not in kinds else kept).append(item)
    config.hook.pytest_deselected(items=others)
    items[:] = kept


@pytest.fixture(scope="session")
def cluster(tmp_path_factory):
    """The cluster, with its `session` and a way to kill an executor."""
    os.environ["PYSPARK_PYTHON"] = sys.executable
    # The executors also import the helpers of the tests.
    here = os.path.dirname(__file__)
    os.environ["PYTHONPATH"] = os.pathsep.join(filter(None, [here, os.environ.get("PYTHONPATH")]))
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")
        made = CLUSTERS[KIND](tmp_path_factory.mktemp("cluster"))
    yield made
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")
        made.stop()


@pytest.fixture
def spark(cluster):
    """The session."""
    return cluster.session
