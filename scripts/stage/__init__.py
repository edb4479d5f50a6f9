"""What tests, benchmarks and ./run --demo run the program with."""
