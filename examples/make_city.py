"""Makes a city of a few thousand houses from nothing, and saves it.

    ./run examples/make_city.py OUT [HOUSES]

The extension of OUT chooses the format: .obj .glb .dae .ply .stl
"""
import math
import os
import random
import sys
import time

import qlx
from qlx import documents

from edit_scene import FORMATS

STREET, PLOT = 60, 100


def house(chance, where):
    height = chance.uniform(40, 120) * (3 if chance.random() < 0.08 else 1)
    made = qlx.BaseObject(qlx.Ocube)
    made.SetName("Tower" if height > 200 else "House")
    made[qlx.PRIM_CUBE_LEN] = qlx.Vector(chance.uniform(40, 80), height, chance.uniform(40, 80))
    made.SetRelPos(where + qlx.Vector(0, height / 2, 0))
    made.SetRelRot(qlx.Vector(chance.gauss(0, 0.03), 0, 0))
    if height < 60:
        roof = qlx.BaseObject(qlx.Ocone)
        roof.SetName("Roof")
        roof[qlx.PRIM_CONE_BRAD] = 45.0
        roof[qlx.PRIM_CONE_HEIGHT] = 30.0
        roof.SetRelPos(qlx.Vector(0, height / 2 + 15, 0))
        roof.InsertUnder(made)
    return made


def city(doc, houses, chance):
    side = math.ceil(math.sqrt(houses))
    districts = {}
    for number in range(houses):
        x, z = number % side, number // side
        key = (x // 10, z // 10)
        if key not in districts:
            districts[key] = qlx.BaseObject(qlx.Onull)
            districts[key].SetName("District %d-%d" % key)
            doc.InsertObject(districts[key])
        where = qlx.Vector(x * PLOT + x // 5 * STREET, 0, z * PLOT + z // 5 * STREET)
        house(chance, where).InsertUnderLast(districts[key])
    return districts


def main():
    kind = FORMATS.get(os.path.splitext(sys.argv[1])[1].lower()) if len(sys.argv) in (2, 3) else None
    number = sys.argv[2] if len(sys.argv) == 3 else "3000"
    if kind is None or not number.isdecimal() or int(number) == 0:
        sys.exit("usage: make_city.py OUT [HOUSES], where OUT ends in " + " ".join(FORMATS))
    houses = int(number)
    doc = documents.BaseDocument()
    begin = time.perf_counter()
    districts = city(doc, houses, random.Random(7))
    built = time.perf_counter()
    doc.ExecutePasses(None, True, True, True, 0)
    evaluated = time.perf_counter()
    print(f"{houses} houses in {len(districts)} districts: built in {built - begin:.2f} s, "
          f"evaluated in {evaluated - built:.2f} s")
    if not documents.SaveDocument(doc, sys.argv[1], qlx.SAVEDOCUMENTFLAGS_NONE, kind):
        sys.exit(1)  # the console says why
    print("saved:", sys.argv[1])


if __name__ == "__main__":
    main()
