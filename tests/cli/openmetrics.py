"""Reads an exposition strictly and prints each sample: openmetrics.py FILE."""
import sys

from prometheus_client.openmetrics.parser import text_fd_to_metric_families

with open(sys.argv[1], encoding="utf-8") as text:
    for family in text_fd_to_metric_families(text):
        assert family.type == "gauge", family.name
        assert family.documentation.endswith("."), family.name
        for sample in family.samples:
            labels = ",".join(f"{name}={value}" for name, value in sorted(sample.labels.items()))
            print(f"{sample.name} {labels} {sample.value:.0f}")
