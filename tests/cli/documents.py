"""Holds documents that the commands printed against the schema: documents.py SCHEMA FILE..."""

import json
import sys

import jsonschema


def main(schema_file, files):
    with open(schema_file, encoding="utf-8") as stream:
        schema = json.load(stream)
    jsonschema.Draft202012Validator.check_schema(schema)
    validator = jsonschema.Draft202012Validator(schema)
    wrong = False
    for file in files:
        with open(file, encoding="utf-8") as stream:
            text = stream.read()
        for error in validator.iter_errors(json.loads(text)):
            wrong = True
            place = "/".join(str(part) for part in error.absolute_path)
            print(f"not as the schema has it, at \"{place}\": {error.message}\n{text}", file=sys.stderr)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], sys.argv[2:]))
