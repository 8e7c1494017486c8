"""Takes a picture of the virtual board with Harvesters (pip install harvesters genicam):

    python consumer.py $(marovine gentl | head -1) belt.ppm
"""

import sys

from harvesters.core import Harvester

harvester = Harvester()
harvester.add_file(sys.argv[1])
harvester.update()
with harvester.create(0) as acquirer:
    acquirer.remote_device.node_map.Height.value = 512
    acquirer.start()
    with acquirer.fetch(timeout=10) as buffer:
        picture = buffer.payload.components[0]
        pixels = picture.data.reshape(picture.height, picture.width, 3)
        with open(sys.argv[2], "wb") as file:
            file.write(b"P6 %d %d 255\n" % (picture.width, picture.height))
            file.write(pixels[:, :, ::-1].tobytes())  # blue, green, red to red, green, blue
    acquirer.stop()
harvester.reset()
