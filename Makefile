.PHONY: demo test build asan fuzz bench

# Start the demo: server with the demo organisation, chat server and the client, signed in.
demo:
	@scripts/install-deps
	@scripts/build default
	@scripts/demo

# Install what is missing, build, and run every test with CTest.
test:
	@scripts/test

build:
	@scripts/install-deps
	@scripts/build default

asan:
	@scripts/install-deps
	@scripts/build asan
	cd build/asan && ctest -j2 --output-on-failure

fuzz:
	@scripts/install-deps
	@scripts/build fuzz
