"""Validates the JSON document on standard input against a schema. For tests only.

usage: check-json.py SCHEMA

Prints the document as one line with sorted keys, or what is wrong and ends with 1.
"""

import json
import sys

import jsonschema

with open(sys.argv[1], encoding="utf-8") as file:
    schema = json.load(file)
jsonschema.Draft202012Validator.check_schema(schema)
text = sys.stdin.buffer.read().decode("utf-8", errors="strict")
document = json.loads(text)
errors = [
    f"{list(error.absolute_path)}: {error.message}"
    for error in jsonschema.Draft202012Validator(schema).iter_errors(document)
]
if errors:
    print("\n".join(errors))
    sys.exit(1)
print(json.dumps(document, sort_keys=True))
