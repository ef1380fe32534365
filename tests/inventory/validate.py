"""validate.py SCHEMA DOCUMENT: prints what a document breaks of a schema, and fails if there is anything."""

import json
import sys

from jsonschema import Draft202012Validator

with open(sys.argv[1], encoding="utf-8") as file:
    schema = json.load(file)
with open(sys.argv[2], encoding="utf-8") as file:
    document = json.load(file)
Draft202012Validator.check_schema(schema)
errors = list(Draft202012Validator(schema).iter_errors(document))
for error in errors:
    print(f"{error.json_path}: {error.message[:200]}")
sys.exit(1 if errors else 0)
